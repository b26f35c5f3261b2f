#pragma once

#include "MinimalCorvo/Types.h"

#include <cstdint>
#include <vector>

namespace Corvo {

/// What a transport layer uses of its devices besides their public interface.
class ICorvoDevicePrivate {
public:
    /// Builds the device's node map, while the device is closed.
    ///
    /// \param data the description, plain or zipped XML, or "file://" and the path of a file with one.
    /// \param injectedXml documents that are merged into it, each XML text or "file://" and a path.
    /// \param extractChunkData extracts the chunk data for a node map of its own, where the device supports that.
    /// \throws LogicalErrorException while the device is open; RuntimeException when the data is no description. An
    /// earlier node map is then kept.
    virtual void CreateNodemapFromXmlData(const std::vector<std::uint8_t> &data, const StringList_t &injectedXml,
                                          bool extractChunkData) = 0;
    virtual bool GetChunkDataNodeMapSupported() const = 0;
    /// Destroys the device, closing it first.
    virtual void Delete() = 0;

protected:
    ~ICorvoDevicePrivate() = default;
};

/// What devices have in common. \tparam Interface the public interface of the device.
template <class Interface> class CCorvoDevicePrivateImpl : public Interface, public ICorvoDevicePrivate {
public:
    bool GetChunkDataNodeMapSupported() const override { return false; }
    void Delete() override { delete this; }
};

} // namespace Corvo
