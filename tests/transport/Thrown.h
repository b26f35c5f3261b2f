#pragma once

#include "Base/GCException.h"

#include <string>

/// What a call throws: "TYPE: DESCRIPTION", or "" when it returns.
template <class Function> std::string thrownBy(Function function) {
    try {
        function();
    } catch (const GenICam::GenericException &error) {
        const char *type = dynamic_cast<const GenICam::RuntimeException *>(&error)           ? "Runtime: "
                           : dynamic_cast<const GenICam::LogicalErrorException *>(&error)    ? "LogicalError: "
                           : dynamic_cast<const GenICam::AccessException *>(&error)          ? "Access: "
                           : dynamic_cast<const GenICam::InvalidArgumentException *>(&error) ? "InvalidArgument: "
                                                                                             : "other: ";
        return std::string(type) + error.GetDescription();
    }
    return "";
}
