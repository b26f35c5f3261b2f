#pragma once

#include <functional>

namespace testnet {

/// Prepares GoogleTest, enters a private network and returns what `run` returns. Where the machine allows no
/// namespaces the tests are skipped (exit status 77), unless CI=true makes that a failure. Listing the tests needs no
/// network.
int runInPrivateNetwork(int argc, char **argv, const std::function<int()> &run);

} // namespace testnet
