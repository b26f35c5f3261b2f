// A formula of a camera description: its first byte chooses integer or double arithmetic. Only GenICam exceptions may
// come out.
// fuzz_formula -max_len=4096 -rss_limit_mb=1024 -malloc_limit_mb=64 -timeout=5 CORPUS seeds/fuzz_formula

#include "Formula.h"

#include <Base/GCException.h>

namespace {

template <class Number> class IndexVariables : public GenApi::IFormulaVariables<Number> {
public:
    Number Get(std::size_t variable) override { return static_cast<Number>(variable) * 1000003 - 7; }
};

template <class Number> void CompileAndEvaluate(std::string_view text, GenApi::EFormulaKind kind) {
    const GenApi::SFormula formula = GenApi::CompileFormula(text, kind, "Node");
    IndexVariables<Number> variables;
    GenApi::EvaluateFormula<Number>(formula, variables);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
    if (size == 0)
        return 0;
    const std::string_view text(reinterpret_cast<const char *>(data) + 1, size - 1);
    try {
        if (data[0] % 2 == 0)
            CompileAndEvaluate<int64_t>(text, GenApi::EFormulaKind::Integer);
        else
            CompileAndEvaluate<double>(text, GenApi::EFormulaKind::Float);
    } catch (const GenICam::GenericException &) {
    }
    return 0;
}
