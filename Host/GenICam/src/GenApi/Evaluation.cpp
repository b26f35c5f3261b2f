#include "Evaluation.h"

#include "NodeImpl.h"
#include "NodeMapImpl.h"

namespace GenApi {

namespace {

// Real descriptions stay below 40 and some hundred. Times the longest formula, the steps still take only seconds.
constexpr unsigned maxDepth = 200;
constexpr unsigned maxSteps = 20'000;

} // namespace

COperation::COperation(const CNodeMapImpl &map) : m_lock(map.GetLock()), m_evaluation(map.Evaluation()) {
    if (m_evaluation.operations++ == 0)
        m_evaluation.Advance();
}

COperation::~COperation() { --m_evaluation.operations; }

CEvaluationScope::CEvaluationScope(const CNodeImpl &node, EEvaluated what)
    : m_node(node), m_bit(static_cast<uint16_t>(what)) {
    if (node.IsEvaluating(what))
        throw RUNTIME_EXCEPTION("Node '%s' depends on itself", node.NameText());
    SEvaluation &evaluation = node.Map().Evaluation();
    if (!evaluation.IsUnderWay())
        evaluation.Advance();
    if (evaluation.depth == 0)
        evaluation.steps = 0;
    if (evaluation.depth >= maxDepth)
        throw RUNTIME_EXCEPTION("Node '%s' stands behind a chain of more than %u references", node.NameText(),
                                maxDepth);
    if (++evaluation.steps > maxSteps)
        throw RUNTIME_EXCEPTION("Node '%s' is used by an evaluation of more than %u steps", node.NameText(), maxSteps);
    ++evaluation.depth;
    node.m_evaluating = static_cast<uint16_t>(node.m_evaluating | m_bit);
}

CEvaluationScope::~CEvaluationScope() {
    --m_node.Map().Evaluation().depth;
    m_node.m_evaluating = static_cast<uint16_t>(m_node.m_evaluating & ~m_bit);
}

} // namespace GenApi
