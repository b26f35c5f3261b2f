#pragma once

#include "commissioning/Change.h"
#include "commissioning/Context.h"
#include "commissioning/Result.h"

namespace commissioning {

/// Sends a camera the settings of a change, by either way. It restarts nothing, so nothing takes effect.
class Writing {
public:
    /// All must outlive it. \param pResult gets the path and how far each part got.
    Writing(const Context &context, const Change &change, Result *pResult)
        : m_Context(context), m_Change(change), m_Result(*pResult) {}

    /// The vendor command. \param name sent along; empty for none. \returns whether it was acknowledged.
    bool broadcast(const std::string &name = "");
    /// Over a connection, which is closed again. \returns false when there is none. \throws what opening and writing
    /// raise; the caller closes the connection then.
    bool unicast();

private:
    bool traceBroadcast() const;
    bool sendCommand(bool isPersistent, bool isDhcp, const std::string &name);
    void writeToOpenDevice();
    void writeMode();
    void writeAddresses();
    void rememberMode();
    void rememberAddresses();

    const Context &m_Context;
    const Change &m_Change;
    Result &m_Result;
};

} // namespace commissioning
