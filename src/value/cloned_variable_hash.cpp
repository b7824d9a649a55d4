// Tables of clones.

#include "value/cloned_variable_hash.h"

#include "image/dictionary.h"
#include "value/system_variable_hash.h"

namespace {

bool Holds_Its_Variables(VariableHash& table) {
    return table.RealIdentity() == &table && !table.AsSystem();
}

} // namespace

ClonedVariableHash::ClonedVariableHash(TarnApplication* application, Dictionary* dictionary,
                                       VariableHash& source, bool clone)
    : ForwardingVariableHash(application, dictionary, source, clone && Holds_Its_Variables(source)) {
    if (Holds_Its_Variables(source))
        return;
    VariableHash* real = source.RealIdentity();
    if (real != &source) {
        target_dictionary = std::make_unique<Dictionary>(*real->dictionary());
        dictionary = target_dictionary.get();
    }
    if (real->AsSystem())
        target = new SystemVariableHash(application, dictionary, *real, clone);
    else
        target = new VariableHash(application, dictionary, *real, clone);
}

ClonedVariableHash::~ClonedVariableHash() {
    if (target != this)
        delete target;
}
