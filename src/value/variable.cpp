// A variable's life and its plain values.

#include "value/variable.h"

#include "app/services/tarn_application.h"
#include "value/aggregate.h"
#include "value/callback_variable.h"
#include "value/element_walk.h"
#include "value/reference_variable.h"

#include <mpdecimal.h>
#include <new>
#include <utility>

Variable::Variable() = default;

Variable::Variable(const char* name, int name_length) : Variable() {
    name_.assign(name, name_length);
}

Variable::Variable(const char* name, int name_length, const char* value, int value_length)
    : Variable(name, name_length) {
    Variable::SetValue(value, value_length);
}

Variable::Variable(const char* name, int name_length, char* value, int value_length, int value_capacity)
    : Variable(name, name_length) {
    Variable::SetValue_Nocopy(value, value_length, value_capacity);
}

Variable::Variable(const char* name, int name_length, int value) : Variable(name, name_length) {
    Variable::SetValue_Integer(value);
}

Variable::Variable(const char* name, int name_length, unsigned value) : Variable(name, name_length) {
    std::uint32_t status = 0;
    decimal = TarnApplication::itompd(nullptr, 0);
    mpd_qset_u32(decimal, value, &Tarn_MPD_Context, &status);
    Set_Scalar(HAS_DECIMAL, VALUE_DECIMAL);
}

Variable::Variable(const char* name, int name_length, mpd_t* value) : Variable(name, name_length) {
    Variable::SetValue_mpd(value);
}

Variable::Variable(const String& name, const String& value)
    : Variable(name.text(), name.length(), value.text(), value.length()) {
}

// Reading the other's value may cache it there, which is no change.
Variable::Variable(const Variable& other) : Variable() {
    name_ = other.name();
    Variable::SetValue(const_cast<Variable&>(other));
}

Variable::Variable(Variable&& other) noexcept
    : name_(std::move(other.name_)), string(std::move(other.string)), integer(other.integer),
      decimal(std::exchange(other.decimal, nullptr)), valid(other.valid), primary(other.primary),
      aggregate(std::exchange(other.aggregate, AGGREGATE_NONE)), elements(std::move(other.elements)),
      refcount_(other.refcount_), link(other.link) {
}

Variable::~Variable() {
    if (decimal)
        mpd_del(decimal);
}

Variable* Variable::Clone(TarnApplication*) {
    return new Variable(*this);
}

const String& Variable::name() const {
    return name_;
}

Variable* Variable::NextIdentity() {
    return this;
}

Variable* Variable::RealIdentity() {
    return this;
}

int Variable::type() const {
    return VARIABLE_PLAIN;
}

int Variable::primary_type() {
    return primary;
}

int Variable::preferred_type() {
    return VALUE_STRING;
}

bool Variable::IsTrue(const char* text, int length) {
    bool point = false;
    for (int i = 0; i < length; ++i) {
        if (text[i] != '0' && (text[i] != '.' || point))
            return true;
        point |= text[i] == '.';
    }
    return false;
}

bool Variable::IsTrue() {
    if (!elements) {
        if (valid & HAS_STRING)
            return IsTrue(string.text(), string.length());
        if (valid & HAS_DECIMAL)
            return !mpd_iszero(decimal);
        if (valid & HAS_INTEGER)
            return integer != 0;
    }
    Convert_String();
    return IsTrue(string.text(), string.length());
}

bool Variable::IsNULL() {
    if (elements)
        return false;
    return valid & HAS_STRING ? string.length() == 0 : !valid;
}

bool Variable::SetNULL() {
    if (valid & HAS_STRING)
        string.assign("", 0);
    Replace_Elements(nullptr, AGGREGATE_NONE);
    return true;
}

AggregateElementTree* Variable::aggregateelements() {
    return elements.get();
}

AggregateType Variable::aggregatetype() {
    return aggregate;
}

int Variable::refcount() const {
    return refcount_;
}

bool Variable::SetName(const String& name) {
    name_ = name;
    return true;
}

bool Variable::SetValue(const char* text, int length) {
    string.assign(text, length);
    Set_Scalar(HAS_STRING, VALUE_STRING);
    return true;
}

bool Variable::SetValue(Variable& source) {
    Set_From(source, ElementCopies::Plain);
    return true;
}

bool Variable::SetValue_Nocopy(char* text, int length, int capacity) {
    string.assign_nocopy(text, length, capacity);
    Set_Scalar(HAS_STRING, VALUE_STRING);
    return true;
}

bool Variable::SetValue_Integer(int number) {
    integer = number;
    Set_Scalar(HAS_INTEGER, VALUE_INTEGER);
    return true;
}

bool Variable::SetValue_mpd(mpd_t* number) {
    decimal = TarnApplication::mpdtompd(decimal, number);
    Set_Scalar(HAS_DECIMAL, VALUE_DECIMAL);
    return true;
}

bool Variable::SetValue_mpd_Nocopy(mpd_t* number) {
    if (decimal && decimal != number)
        mpd_del(decimal);
    decimal = number;
    Set_Scalar(HAS_DECIMAL, VALUE_DECIMAL);
    return true;
}

void Variable::IncRefCount() {
    ++refcount_;
}

void Variable::DecRefCount() {
    if (--refcount_ == 0)
        delete this;
}

void Variable::Serialize(String& out) {
    if (!elements) {
        if (out.length())
            out.cat(',');
        const String& text = value();
        out.cat(text.text(), text.length());
        return;
    }
    ElementWalk walk;
    walk.Enter(elements.get());
    for (int depth = 1; depth;) {
        AggregateElement* element = walk.Next();
        if (!element) {
            --depth;
            continue;
        }
        AggregateElementTree* inner = element->var()->aggregateelements();
        if (!inner)
            element->var()->Serialize(out);
        else if (walk.Enter(inner))
            ++depth;
    }
}

void Variable::Make_Reference(Variable* target) {
    if (target->RealIdentity() == this)
        return;
    Variable rest(std::move(*this));
    this->Variable::~Variable();
    new (this) ReferenceVariable(std::move(rest.name_), rest.refcount_, target);
}

void Variable::Make_CallbackStruct(CallbackVariableCallback* callback) {
    Variable rest(std::move(*this));
    this->Variable::~Variable();
    new (this) CallbackStructVariable(std::move(rest), callback);
}

ImmutableVariable* Variable::AsImmutable() {
    return nullptr;
}

// What goes may hang on the variable, so it goes last.
void Variable::Replace_Elements(std::unique_ptr<AggregateElementTree> tree, AggregateType type) {
    const auto old = std::exchange(elements, std::move(tree));
    aggregate = type;
    valid = 0;
    primary = VALUE_NONE;
}

void Variable::Set_Scalar(unsigned char representation, int type) {
    Replace_Elements(nullptr, AGGREGATE_NONE);
    valid = representation;
    primary = type;
}

void Variable::Set_From(Variable& source, ElementCopies copies) {
    Variable* real = source.RealIdentity();
    if (AggregateElementTree* tree = real->aggregateelements())
        Replace_Elements(Copy_Tree(*tree, copies), real->aggregatetype());
    else if (real != this)
        Copy_Scalar(*real);
}

// What the source presents, by its kind, its elements aside.
void Variable::Copy_Scalar(Variable& source) {
    switch (source.type()) {
    case VARIABLE_NULL:
        // An empty text rather than NULL: scripts tell the two apart by the primary type.
        string.assign("", 0);
        Set_Scalar(HAS_STRING, VALUE_NONE);
        break;
    case VARIABLE_INTEGER: Variable::SetValue_Integer(source.value_integer()); break;
    case VARIABLE_TEXT: {
        const String& text = source.value();
        Variable::SetValue(text.text(), text.length());
        break;
    }
    case VARIABLE_FIELDS: {
        const VariableHold held = Hold(&source);
        Copy_Representations(source);
        if (primary == VALUE_NONE || !valid)
            Copy_Preferred(source);
        break;
    }
    default:
        if (!source.valid)
            source.value();
        Copy_Representations(source);
    }
}

void Variable::Copy_Representations(Variable& source) {
    const unsigned char representations = source.valid;
    const int type = source.primary;
    if (representations & HAS_STRING)
        string.assign(source.string.text(), source.string.length());
    if (representations & HAS_INTEGER)
        integer = source.integer;
    if (representations & HAS_DECIMAL)
        decimal = TarnApplication::mpdtompd(decimal, source.decimal);
    Set_Scalar(representations, type);
}

void Variable::Copy_Preferred(Variable& source) {
    switch (source.preferred_type()) {
    case VALUE_INTEGER:
        integer = source.value_integer();
        valid |= HAS_INTEGER;
        primary = VALUE_INTEGER;
        break;
    case VALUE_DECIMAL:
        decimal = TarnApplication::mpdtompd(decimal, source.value_mpd());
        valid |= HAS_DECIMAL;
        primary = VALUE_DECIMAL;
        break;
    default: {
        const String& text = source.value();
        string.assign(text.text(), text.length());
        valid |= HAS_STRING;
        primary = VALUE_STRING;
    }
    }
}
