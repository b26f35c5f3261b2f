// A formula of a camera description: its first byte chooses integer or double arithmetic. Only GenICam exceptions may
// come out.
// fuzz_formula -max_len=4096 -rss_limit_mb=1024 -malloc_limit_mb=64 -timeout=5 CORPUS seeds/fuzz_formula

#include "Formula.h"

#include <Base/GCException.h>

namespace {

class IndexVariables : public GenApi::IFormulaVariables {
public:
    explicit IndexVariables(GenApi::EFormulaKind kind) : m_kind(kind) {}
    GenApi::FormulaNumber Get(std::size_t variable) override {
        const auto value = static_cast<int64_t>(variable) * 1000003 - 7;
        return m_kind == GenApi::EFormulaKind::Integer ? GenApi::FormulaNumber(value) : static_cast<double>(value);
    }

private:
    GenApi::EFormulaKind m_kind;
};

void CompileAndEvaluate(std::string_view text, GenApi::EFormulaKind kind) {
    const GenApi::SFormula formula = GenApi::CompileFormula(text, kind, "Node");
    IndexVariables variables(kind);
    GenApi::ToInteger(GenApi::EvaluateFormula(formula, variables), formula);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
    if (size == 0)
        return 0;
    const std::string_view text(reinterpret_cast<const char *>(data) + 1, size - 1);
    try {
        CompileAndEvaluate(text, data[0] % 2 == 0 ? GenApi::EFormulaKind::Integer : GenApi::EFormulaKind::Float);
    } catch (const GenICam::GenericException &) {
    }
    return 0;
}
