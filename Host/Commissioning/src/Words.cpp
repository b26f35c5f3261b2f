#include "commissioning/Words.h"

#include "commissioning/Journal.h"
#include "commissioning/Result.h"

namespace commissioning {

const char *toText(Mode mode) {
    switch (mode) {
    case Mode::Static:
        return "static";
    case Mode::Dhcp:
        return "dhcp";
    case Mode::Auto:
        break;
    }
    return "auto";
}

const char *toText(Status status) {
    switch (status) {
    case Status::Ok:
        return "ok";
    case Status::InUse:
        return "in-use";
    case Status::NotReachable:
        return "not-reachable";
    case Status::Unknown:
        break;
    }
    return "unknown";
}

const char *toText(Severity severity) {
    switch (severity) {
    case Severity::Error:
        return "error";
    case Severity::Warning:
        return "warning";
    case Severity::Info:
        break;
    }
    return "info";
}

const char *toText(LinkKind kind) {
    switch (kind) {
    case LinkKind::Physical:
        return "physical";
    case LinkKind::Bridge:
        return "bridge";
    case LinkKind::Vlan:
        return "vlan";
    case LinkKind::Wireless:
        return "wireless";
    case LinkKind::Virtual:
        break;
    }
    return "virtual";
}

const char *toText(Path path) {
    switch (path) {
    case Path::Broadcast:
        return "broadcast";
    case Path::Unicast:
        return "unicast";
    case Path::Force:
        return "force";
    case Path::None:
        break;
    }
    return "none";
}

const char *toText(Fate fate) {
    switch (fate) {
    case Fate::Done:
        return "done";
    case Fate::Failed:
        return "failed";
    case Fate::Unconfirmed:
        return "unconfirmed";
    case Fate::RolledBack:
        return "rolled-back";
    case Fate::Open:
        break;
    }
    return "open";
}

} // namespace commissioning
