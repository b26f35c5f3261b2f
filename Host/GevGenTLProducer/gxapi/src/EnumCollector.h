#pragma once

#include "Collector.h"
#include "gxapi/Enumerator.h"

#include <vector>

namespace GxImp {

/// Gathers DISCOVERY acknowledges. The callee's work is put off until Deliver, so that the sockets are read as fast as
/// acknowledges come in: the default receive buffer holds no more than some 170 of them.
class CEnumCollector : public CCollector {
public:
    /// \param pCallee may be null. \param acceptAll switches the subnet check off.
    CEnumCollector(Gx::Enumerator::Callee *pCallee, bool acceptAll) noexcept;

    GXSTATUS OnReady(CSocket &socket, const _GX_SOCKET_INTERFACE_INFO &interfaceInfo) noexcept override;

    /// Hands the acknowledges gathered so far to the callee, in the order of their arrival.
    void Deliver() noexcept;

private:
    struct Acknowledge {
        sockaddr_in sender;
        sockaddr_in adapter;
        int row;
        GEV_DISCOVERY_INFO info;
    };

    GXSTATUS Keep(const Acknowledge &acknowledge) noexcept;
    GXSTATUS Report(const Acknowledge &acknowledge) noexcept;

    Gx::Enumerator::Callee *m_pCallee;
    bool m_AcceptAll;
    std::vector<Acknowledge> m_Acknowledges;
};

} // namespace GxImp
