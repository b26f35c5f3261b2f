#pragma once

#include "commissioning/Search.h"

#include <map>
#include <set>
#include <string>

namespace commissioning {

/// Tells by the answers to searches whether several cameras have one MAC.
class Answers {
public:
    /// For a search whose answers are to be known as well. It must not outlive them.
    SearchOptions options();
    /// A camera may have moved between two searches.
    void forget() { m_Senders.clear(); }
    bool isTwin(const std::string &mac) const;

private:
    std::map<std::string, std::set<std::string>> m_Senders; ///< by MAC
};

} // namespace commissioning
