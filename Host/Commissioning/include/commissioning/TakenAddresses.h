#pragma once

#include "commissioning/Plan.h"

#include <functional>
#include <map>
#include <set>
#include <string>

namespace commissioning {

/// Asks whether others than the listed cameras have the addresses that a plan gives. What a listed camera has counts as
/// known, and so does what is outside the subnets of its adapter. Takes 3 to 5 s for each subnet in which an address is
/// new, and up to 9 s more where somebody was there not long ago. Any thread may call.
///
/// \param inventory of the review. \param pFree those known to be free are not asked for; found ones are added.
/// \param isCancelled polled every 50 ms; what is known by then is returned.
/// \return the MAC of whoever has one, by address. \throws std::system_error
std::map<Address, std::string> findTaken(const PlanReview &review, const Inventory &inventory, std::set<Address> *pFree,
                                         const std::function<bool()> &isCancelled);

} // namespace commissioning
