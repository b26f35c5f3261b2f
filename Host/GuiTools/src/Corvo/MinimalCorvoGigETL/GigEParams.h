#pragma once

#include "GenApi/NodeMapRef.h"
#include "GenApi/Pointer.h"

#include <memory>

/// The features of a camera that this layer itself uses; those the camera does not have are empty.
namespace Quorel_GigEImplParams {

class CGigEImplParams_Params {
public:
    GenApi::CIntegerPtr GevCurrentIPConfiguration; ///< GEV_IP_CONFIG_... of the next restart
    GenApi::CIntegerPtr GevHeartbeatTimeout;       ///< ms
    GenApi::CIntegerPtr GevPersistentIPAddress;
    GenApi::CIntegerPtr GevPersistentSubnetMask;
    GenApi::CIntegerPtr GevPersistentDefaultGateway;
    GenApi::CIntegerPtr GevSCPD;
    GenApi::CIntegerPtr GevSCPSPacketSize;
    GenApi::CIntegerPtr PayloadSize;
    GenApi::CIntegerPtr TLParamsLocked;

protected:
    CGigEImplParams_Params() = default;
    void _Initialize(GenApi::INodeMap *pNodeMap) {
        GevCurrentIPConfiguration = pNodeMap->GetNode("GevCurrentIPConfiguration");
        GevHeartbeatTimeout = pNodeMap->GetNode("GevHeartbeatTimeout");
        GevPersistentIPAddress = pNodeMap->GetNode("GevPersistentIPAddress");
        GevPersistentSubnetMask = pNodeMap->GetNode("GevPersistentSubnetMask");
        GevPersistentDefaultGateway = pNodeMap->GetNode("GevPersistentDefaultGateway");
        GevSCPD = pNodeMap->GetNode("GevSCPD");
        GevSCPSPacketSize = pNodeMap->GetNode("GevSCPSPacketSize");
        PayloadSize = pNodeMap->GetNode("PayloadSize");
        TLParamsLocked = pNodeMap->GetNode("TLParamsLocked");
    }
};

} // namespace Quorel_GigEImplParams

/// The parameters of the connection to a camera.
namespace Quorel_GigETLParams {

class CGigETLParams_Params {
public:
    GenApi::CIntegerPtr ReadTimeout;       ///< ms
    GenApi::CIntegerPtr WriteTimeout;      ///< ms
    GenApi::CIntegerPtr MaxRetryCountRead; ///< re-sends after the first attempt
    GenApi::CIntegerPtr MaxRetryCountWrite;
    GenApi::CBooleanPtr CommandDuplicationEnable;
    GenApi::CIntegerPtr HeartbeatTimeout; ///< ms
    GenApi::CIntegerPtr ReadWriteTimeoutCount;

protected:
    CGigETLParams_Params() = default;
    void _Initialize(GenApi::INodeMap *pNodeMap) {
        ReadTimeout = pNodeMap->GetNode("ReadTimeout");
        WriteTimeout = pNodeMap->GetNode("WriteTimeout");
        MaxRetryCountRead = pNodeMap->GetNode("MaxRetryCountRead");
        MaxRetryCountWrite = pNodeMap->GetNode("MaxRetryCountWrite");
        CommandDuplicationEnable = pNodeMap->GetNode("CommandDuplicationEnable");
        HeartbeatTimeout = pNodeMap->GetNode("HeartbeatTimeout");
        ReadWriteTimeoutCount = pNodeMap->GetNode("ReadWriteTimeoutCount");
    }
};

} // namespace Quorel_GigETLParams

namespace Corvo {

using CTLParamsNodeMapPtr = std::unique_ptr<GenApi::CNodeMapRefT<Quorel_GigETLParams::CGigETLParams_Params>>;

} // namespace Corvo
