#pragma once

#include "GenApi/IDestroy.h"
#include "GenApi/NodeMapFactory.h"

namespace GenApi {

/// Parameter class without typed features.
class CGeneric_Params {
protected:
    void _Initialize(INodeMap * /*pNodeMap*/) {}
};

/// Owns a node map. \p TCameraParams supplies typed features; its member `_Initialize(INodeMap *)` looks them up and is
/// called whenever a node map is taken over. Copies share the node map, which the last one destroys. Not locked itself.
template <class TCameraParams> class CNodeMapRefT : public TCameraParams {
public:
    explicit CNodeMapRefT(const gcstring &DeviceName = "Device") : m_deviceName(DeviceName) {}
    /// Takes the node map over.
    explicit CNodeMapRefT(INodeMap *pNodeMap, const gcstring &DeviceName = "Device") : m_deviceName(DeviceName) {
        _Attach(pNodeMap);
    }

    /// Takes the node map over; what was held before is given up.
    void _Attach(INodeMap *pNodeMap) {
        m_nodeMap.reset(pNodeMap, &Destroy);
        TCameraParams::_Initialize(pNodeMap);
    }
    /// Gives the node map up. References of the parameter class are not cleared.
    void _Destroy() { m_nodeMap.reset(); }
    bool _IsAttached() const { return m_nodeMap != nullptr; }
    /// The node map held, or null.
    INodeMap *_GetNodeMap() const { return m_nodeMap.get(); }

    void _LoadXMLFromFile(const gcstring &FileName) { Load(CNodeMapFactory(ContentType_Xml, FileName)); }
    void _LoadXMLFromZIPFile(const gcstring &FileName) { Load(CNodeMapFactory(ContentType_ZippedXml, FileName)); }
    void _LoadXMLFromString(const gcstring &XMLData) {
        Load(CNodeMapFactory(ContentType_Xml, XMLData.c_str(), XMLData.size()));
    }
    void _LoadXMLFromZIPData(const void *zipData, std::size_t zipSize) {
        Load(CNodeMapFactory(ContentType_ZippedXml, zipData, zipSize));
    }

    gcstring _GetDeviceName() const { return m_deviceName; }
    /// The operations below forward to the node map. \throws AccessException when none is held.
    void _GetNodes(NodeList_t &Nodes) const { Checked().GetNodes(Nodes); }
    INode *_GetNode(const gcstring &key) const { return Checked().GetNode(key); }
    void _InvalidateNodes() const { Checked().InvalidateNodes(); }
    bool _Connect(IPort *pPort, const gcstring &PortName) const { return Checked().Connect(pPort, PortName); }
    bool _Connect(IPort *pPort) const { return Checked().Connect(pPort); }
    void _Poll(int64_t ElapsedTime) { Checked().Poll(ElapsedTime); }
    CLock &_GetLock() const { return Checked().GetLock(); }

private:
    static void Destroy(INodeMap *pNodeMap) {
        if (auto *destroyable = dynamic_cast<IDestroy *>(pNodeMap))
            destroyable->Destroy();
    }
    void Load(CNodeMapFactory factory) { _Attach(factory.CreateNodeMap(m_deviceName)); }
    INodeMap &Checked() const {
        if (m_nodeMap == nullptr)
            throw ACCESS_EXCEPTION("Feature not present (reference not valid) in '%s'", m_deviceName.c_str());
        return *m_nodeMap;
    }

    gcstring m_deviceName;
    std::shared_ptr<INodeMap> m_nodeMap;
};

using CNodeMapRef = CNodeMapRefT<CGeneric_Params>;

} // namespace GenApi
