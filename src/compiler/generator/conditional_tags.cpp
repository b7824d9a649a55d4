// TnIFDEF and TnIFNDEF. Nothing is skipped in a false block: the scanner and all checks run as ever, and only
// the output goes nowhere.

#include "app/driver/compiler_application.h"
#include "backend/outputs/compiler_output.h"
#include "compiler/generator/compiler_parser.h"
#include "core/text_length.h"

#include <memory>
#include <string_view>

bool CompilerParser::Debugging() {
    constexpr std::string_view name = "DEBUG_TARN_COMPILER";
    return application && application->Is_Defined(name.data(), Length_Of(name));
}

bool CompilerParser::Inside_False_Block() {
    const Ifdef_Resolution_Info* innermost = ifdef_stack.Top();
    return innermost && !innermost->generating;
}

static_assert(element_of<Tag::Ifdef, Attribute::Name> == element_of<Tag::Ifndef, Attribute::Name>);

ParserStatus CompilerParser::Process_IFDEF(int tag) {
    const bool negated = tag == Tag::Ifndef;
    int length = 0;
    const char* name = Value<Tag::Ifdef, Attribute::Name>()->Get_Simple_Text(&length);
    const bool defined = application && application->Is_Defined(name ? name : "", length);
    const bool enclosed_by_false = Inside_False_Block();
    const bool generating = defined != negated && !enclosed_by_false;
    ifdef_stack.Push(new Ifdef_Resolution_Info(Linenumber(), Source_Name(), generating, negated));
    if (generating || enclosed_by_false)
        return PARSER_OK;
    Suspend_Generation();
    return Debugging() ? Report<Message::Generation_Suspending>() : PARSER_OK;
}

ParserStatus CompilerParser::Process_End_IFDEF(int tag) {
    const bool negated = tag == Tag::Ifndef;
    const char* closing = Tag_Word(tag);
    if (!ifdef_stack.Top()) {
        Note<Message::Conditional_Unopened>(closing, closing);
        return PARSER_ERROR;
    }
    std::unique_ptr<Ifdef_Resolution_Info> block(ifdef_stack.Pop());
    if (static_cast<bool>(block->negated) != negated) {
        // The words name the two tags the other way round.
        Note<Message::Conditional_Mismatched>(Tag_Word(negated ? Tag::Ifdef : Tag::Ifndef), closing);
        return PARSER_ERROR;
    }
    if (!block->generating && !Inside_False_Block())
        Resume_Generation();
    return PARSER_OK;
}

// A closing tag of the wrong kind leaves the output suspended: then it stays so.
void CompilerParser::Suspend_Generation() {
    if (!null_output)
        null_output = std::make_unique<NullCompilerOutput>();
    if (!suspended_output)
        suspended_output = Set_Output(null_output.get());
}

void CompilerParser::Resume_Generation() {
    if (Debugging())
        Note<Message::Generation_Restarting>(); // told for information
    if (suspended_output) {
        (void)Set_Output(suspended_output); // what it answers is null_output
        suspended_output = nullptr;
    }
}
