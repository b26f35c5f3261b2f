#pragma once

#include "MinimalCorvo/Types.h"

#include <chrono>
#include <cstdint>
#include <vector>

namespace Corvo {

class CQuorelGigEDeviceInfo;

/// Fetches the GenICam description that a camera stores in its own memory. Keeps nothing between calls, so any thread
/// may call. The camera is read without taking any privilege, so one that another application controls will do.
///
/// Both operations throw RuntimeException when the camera does not answer, is too slow, names no file in its memory,
/// one of more than 16 MiB, or one that is neither ".xml" nor ".zip".
class XmlFileProviderPrivateImpl {
public:
    /// \param timeLimit for a whole description, whatever the camera answers: who waits can do nothing else meanwhile.
    explicit XmlFileProviderPrivateImpl(std::chrono::milliseconds timeLimit = std::chrono::seconds(20))
        : m_timeLimit(timeLimit) {}

    /// \param bytes receives the file as stored, plain or zipped.
    void ProvideXmlFileRaw(const CQuorelGigEDeviceInfo &info, std::vector<std::uint8_t> &bytes) const;
    /// \param fileName receives an empty text: there is no file on this computer. \param xmlText receives the XML,
    /// unzipped. \throws RuntimeException also when there is nothing in the file, and when it cannot be unzipped.
    void ProvideXmlFile(const CQuorelGigEDeviceInfo &info, String_t &fileName, String_t &xmlText) const;

private:
    std::chrono::milliseconds m_timeLimit;
};

} // namespace Corvo
