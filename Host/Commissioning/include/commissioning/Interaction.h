#pragma once

#include "commissioning/Inventory.h"

#include <chrono>
#include <exception>
#include <memory>
#include <optional>
#include <string>

namespace commissioning {

/// Parts of an operation that take time.
enum class Step { Look, Broadcast, Connect, Write, Force, Rediscover };

/// What is asked before a temporary address is forced.
struct AddressQuestion {
    std::string
        text;        ///< what the question is for, as the caller wants it shown; empty when a change needs a connection
    std::string mac; ///< empty when it is to be entered
    std::string adapter; ///< name of the one the camera is behind; empty when unknown
    bool asksForMac = false;
    bool isFirst = true; ///< false: the same question again, with what was entered before
    std::string reason;  ///< what speaks against it or has failed; may be empty
};

struct TemporaryAddress {
    std::string mac; ///< 12 upper-case hexadecimal digits
    Address address = 0;
    Address mask = 0;
    Address gateway = 0;
};

/// What a failure says, for people.
std::string failureText(const std::exception_ptr &error);

/// Whoever started an operation: told how it goes, asked what only people know. Every function is called on the thread
/// of the operation, which waits for its return. What one throws ends the operation as any failure does.
class Interaction {
public:
    virtual ~Interaction() = default;

    /// \returns what shows the step as long as it exists; may be null.
    [[nodiscard]] virtual std::shared_ptr<void> begin(Step step) = 0;
    virtual void pause(std::chrono::milliseconds time) = 0;
    /// \returns none to cancel.
    virtual std::optional<TemporaryAddress> askTemporaryAddress(const AddressQuestion &question) = 0;
    /// The address entered is none that a camera may have; it is asked for again.
    virtual void rejectTemporaryAddress() = 0;
    /// The camera cannot be changed because somebody else controls it.
    virtual void accessDenied() = 0;
    /// What is known of a camera has changed. \param forced the temporary address it was given just now.
    virtual void updated(const std::string &mac, std::optional<Address> forced) = 0;
    /// \param context the operation that failed. \param attempted what it was about to do; may be null.
    virtual void failure(const char *context, const std::exception_ptr &error, const char *attempted) = 0;
};

} // namespace commissioning
