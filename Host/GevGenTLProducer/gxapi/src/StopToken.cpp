#include "gxapi/StopToken.h"

#include "StopPoll.h"

namespace {

constexpr int PollPeriod_ms = 50;

thread_local const Gx::CStopToken *t_pToken = nullptr;

} // namespace

Gx::CStopScope::CStopScope(const CStopToken *token) noexcept : m_pOuter(t_pToken) { t_pToken = token; }

const Gx::CStopToken *Gx::CStopScope::Current() noexcept { return t_pToken; }

bool Gx::CStopScope::IsStopRequested() noexcept { return GxImp::IsStopRequested(); }

Gx::CStopScope::~CStopScope() { t_pToken = m_pOuter; }

bool GxImp::IsStopRequested() noexcept { return t_pToken != nullptr && t_pToken->IsStopRequested(); }

int GxImp::StopPollTimeout(int timeout_ms) noexcept {
    const bool isShort = timeout_ms >= 0 && timeout_ms <= PollPeriod_ms;
    return t_pToken != nullptr && !isShort ? PollPeriod_ms : timeout_ms;
}
