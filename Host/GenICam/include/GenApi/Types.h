#pragma once

/// \file
/// Enumerations and list types of the GenApi interfaces. Names and values are those of the GenICam standard.

#include "Base/GCBase.h"

#include <cstdint>
#include <vector>

namespace GenApi {

using GenICam::gcstring;
using GenICam::gcstring_vector;

class INode;
class IValue;

using NodeList_t = std::vector<INode *>;
using FeatureList_t = std::vector<IValue *>;
using StringList_t = gcstring_vector;

/// What can be done with a node right now.
enum EAccessMode {
    NI, ///< Not implemented.
    NA, ///< Implemented, but not available at present.
    WO, ///< Write only.
    RO, ///< Read only.
    RW, ///< Readable and writable.
    _UndefinedAccesMode
};

/// Which users a feature is meant for.
enum EVisibility { Beginner = 0, Expert = 1, Guru = 2, Invisible = 3, _UndefinedVisibility = 99 };

/// How a register node keeps what it read or wrote.
enum ECachingMode {
    NoCache,      ///< Every access goes to the port.
    WriteThrough, ///< A written value is kept and serves later reads.
    WriteAround,  ///< A write drops the kept value; the next read fetches it.
    _UndefinedCachingMode
};

/// How a number is best shown.
enum ERepresentation {
    Linear,
    Logarithmic,
    Boolean,
    PureNumber,
    HexNumber,
    IPV4Address,
    MACAddress,
    _UndefinedRepresentation
};

enum EDisplayNotation { fnAutomatic, fnFixed, fnScientific, _UndefinedEDisplayNotation };

/// Which values between minimum and maximum are allowed.
enum EIncMode {
    noIncrement,    ///< All.
    fixedIncrement, ///< Minimum plus multiples of the increment.
    listIncrement   ///< Those of the list of valid values.
};

enum ENameSpace { Custom, Standard, _UndefinedNameSpace };

/// Main interface of a node.
enum EInterfaceType {
    intfIValue,
    intfIBase,
    intfIInteger,
    intfIBoolean,
    intfICommand,
    intfIFloat,
    intfIString,
    intfIRegister,
    intfICategory,
    intfIEnumeration,
    intfIEnumEntry,
    intfIPort
};

/// When a callback runs, relative to the node map's lock.
enum ECallbackType {
    cbPostInsideLock = 1, ///< After the operation, before the lock is released.
    cbPostOutsideLock = 2 ///< After the lock was released.
};

/// Which neighbours INode::GetChildren lists.
enum ELinkType {
    ctReadingChildren,      ///< Nodes this node's value, limits, address or access mode is read from.
    ctWritingChildren,      ///< Nodes that a write to this node is passed on to.
    ctInvalidatingChildren, ///< Nodes named by pInvalidator.
    ctDependingNodes,       ///< Nodes that are invalidated when this node changes, directly or through others.
    ctTerminalNodes         ///< Registers and variables at the end of the chain of writes.
};

} // namespace GenApi
