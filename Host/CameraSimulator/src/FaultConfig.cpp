#include "camsim/FaultConfig.h"

#include <initializer_list>
#include <stdexcept>
#include <string>
#include <utility>

namespace camsim {

void FaultConfig::check() const {
    const std::initializer_list<std::pair<const char *, double>> chances = {
        {"lossToCamera", lossToCamera}, {"lossFromCamera", lossFromCamera},
        {"wrongId", wrongId},           {"wrongCode", wrongCode},
        {"shortAck", shortAck},         {"longAck", longAck},
        {"staleId", staleId},           {"garbage", garbage},
        {"duplicate", duplicate},       {"reorder", reorder}};
    for (const auto &[name, chance] : chances)
        if (!(chance >= 0 && chance <= 100))
            throw std::invalid_argument(std::string(name) + " must be a percentage of 0 to 100");
    if (outage.count() < 0)
        throw std::invalid_argument("the outage must be 0 ms or longer");
    if (delayMin.count() < 0 || delayMin > delayMax)
        throw std::invalid_argument("the delay must be a range of 0 ms or more, the smaller time first");
}

} // namespace camsim
