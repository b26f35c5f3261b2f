#include "MinimalCorvo/EmbeddedNodeMapFactory.h"

#include "MinimalCorvo/ResourceHelper.h"
#include "MinimalCorvo/Utilities.h"

#include "Base/GCException.h"
#include "GenApi/IDestroy.h"
#include "GenApi/NodeMapFactory.h"

#include <cassert>
#include <memory>

namespace Corvo {

namespace {

struct ResourceDeleter {
    void operator()(const void *data) const { Resource::FreeResource(data); }
};

} // namespace

GenApi::INodeMap *CreateNodeMapFromEmbeddedXML(const char *name, const char * /*type*/) {
    std::size_t size = 0;
    const std::unique_ptr<const void, ResourceDeleter> xml(Resource::GetResourceData(name, nullptr, &size));
    if (xml == nullptr)
        return nullptr;
    try {
        return GenApi::CNodeMapFactory(GenApi::ContentType_Xml, xml.get(), size).CreateNodeMap("Device");
    } catch (const GenICam::GenericException &) {
        assert(false && "Failed to load embedded XML");
        throw;
    }
}

GenApi::INodeMap *CreateDefaultTransportLayerParamsNodeMap() {
    return CreateNodeMapFromEmbeddedXML("DefaultTransportLayerParams");
}

void DestroyNodeMap(GenApi::INodeMap *nodeMap) {
    if (auto *destroyable = dynamic_cast<GenApi::IDestroy *>(nodeMap))
        destroyable->Destroy();
}

} // namespace Corvo
