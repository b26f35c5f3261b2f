#pragma once

#include "MinimalCorvo/DeviceAccessMode.h"
#include "MinimalCorvo/DeviceInfo.h"

#include <cstdint>
#include <functional>

namespace GenApi {
class INodeMap;
}

namespace Corvo {

class ICorvoDevice;

// Parts of devices that this system has no use for; no device makes any.
class IChunkParser;
class IEventAdapter;
class IEventGrabber;
class ISelfReliantChunkParser;
class IStreamGrabber;

/// Told that a device was lost. Runs on a thread of its own and may call the device: deregister itself, close the
/// device or destroy it. It must not wait for another thread that closes the device or deregisters the callback.
using DeviceCallback = std::function<void(ICorvoDevice *)>;
/// Identifies a registered callback; 0 is never used.
using DeviceCallbackHandle = std::uintptr_t;

/// A device, closed at first. Made and destroyed by a device factory.
///
/// Any thread may call it, but not while it holds the lock of one of the device's node maps, as a node callback inside
/// the lock does: opening and closing take those locks themselves.
class ICorvoDevice {
public:
    ICorvoDevice(const ICorvoDevice &) = delete;
    ICorvoDevice &operator=(const ICorvoDevice &) = delete;

    /// Opens the device. Takes up to a second when it does not answer.
    /// \throws LogicalErrorException when it is open already, and stays so; RuntimeException when it cannot be reached
    /// or another application controls it, and it stays closed.
    virtual void Open(AccessModeSet modes) = 0;
    /// Closes the device, whatever state it is in; a lost device, too, is closed before it can be opened again.
    /// \throws LogicalErrorException when it is closed already.
    virtual void Close() = 0;
    /// A device that was lost stays open until it is closed.
    virtual bool IsOpen() const = 0;
    virtual const CDeviceInfo &GetDeviceInfo() const = 0;
    /// The modes it was opened with; empty while it is closed.
    virtual AccessModeSet AccessMode() const = 0;
    /// Always null.
    virtual IEventGrabber *GetEventGrabber() = 0;
    /// Always null, whatever GetNumStreamGrabberChannels says.
    virtual IStreamGrabber *GetStreamGrabber(std::uint32_t index) = 0;
    /// The device's features, or null when it has no usable description. Not accessible while the device is closed.
    virtual GenApi::INodeMap *GetNodeMap() = 0;
    virtual std::uint32_t GetNumStreamGrabberChannels() const = 0;
    /// The parameters of the connection to the device.
    virtual GenApi::INodeMap *GetTLNodeMap() = 0;

    /// Stores a copy of the callback until it is deregistered or the device is closed.
    /// \throws LogicalErrorException while the device is closed.
    virtual DeviceCallbackHandle RegisterRemovalCallback(DeviceCallback &callback) = 0;
    /// After the return the callback runs no more, except on the calling thread further up the stack.
    /// \returns false when the handle is unknown. \throws LogicalErrorException while the device is closed.
    virtual bool DeregisterRemovalCallback(DeviceCallbackHandle handle) = 0;

    // The factories below return null, what destroys does nothing.
    virtual IChunkParser *CreateChunkParser() = 0;
    virtual void DestroyChunkParser(IChunkParser *pChunkParser) = 0;
    virtual IEventAdapter *CreateEventAdapter() = 0;
    virtual void DestroyEventAdapter(IEventAdapter *pEventAdapter) = 0;
    virtual ISelfReliantChunkParser *CreateSelfReliantChunkParser() = 0;
    virtual void DestroySelfReliantChunkParser(ISelfReliantChunkParser *pChunkParser) = 0;

protected:
    ICorvoDevice() = default;
    virtual ~ICorvoDevice() = default;
};

} // namespace Corvo
