#pragma once

#include "GenApi/IValue.h"

namespace GenApi {

class ICommand : virtual public IValue {
public:
    /// Starts the command. \throws AccessException when the node is not writable.
    virtual void Execute(bool Verify = true) = 0;
    void operator()() { Execute(); }
    /// True when the device no longer shows the command value, or cannot tell. The first call that finds a command
    /// finished fires the callbacks of the nodes that depend on it.
    virtual bool IsDone(bool Verify = true) = 0;
};

} // namespace GenApi
