#pragma once

#include "NodeImpl.h"

namespace GenApi {

/// The public operations on values, the same for all node types: each takes the lock, checks the access mode and, on
/// demand, the limits, and lets changes fire their callbacks.

/// \throws OutOfRangeException when the value is outside the node's limits or not in its list of valid values; the
/// integer one also when it is not on one of the node's steps.
void CheckInteger(const CNodeImpl &node, int64_t value);
void CheckFloat(const CNodeImpl &node, double value);

int64_t GetInteger(const CNodeImpl &node, bool verify, bool ignoreCache);
void SetInteger(CNodeImpl &node, int64_t value, bool verify);
int64_t GetIntegerLimit(const CNodeImpl &node, ELimit limit);
/// Numbers of the node's ValidValueSet.
std::vector<int64_t> ValidIntegers(const CNodeImpl &node, bool bounded);

double GetFloat(const CNodeImpl &node, bool verify, bool ignoreCache);
void SetFloat(CNodeImpl &node, double value, bool verify);
double GetFloatLimit(const CNodeImpl &node, ELimit limit);
std::vector<double> ValidFloats(const CNodeImpl &node, bool bounded);

std::string GetText(const CNodeImpl &node, bool ignoreCache);
/// \throws OutOfRangeException when \p verify is set and the text is too long.
void SetText(CNodeImpl &node, const std::string &text, bool verify);

bool GetIsCached(const CNodeImpl &node);
ERepresentation GetRepresentation(const CNodeImpl &node);

/// \throws InvalidArgumentException always.
[[noreturn]] void RefuseText(const CNodeImpl &node, const gcstring &text);

} // namespace GenApi
