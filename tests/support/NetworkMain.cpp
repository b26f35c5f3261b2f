// main() of the tests that need a network of their own.

#include "support/NetworkMain.h"

#include <gtest/gtest.h>

int main(int argc, char **argv) {
    return testnet::runInPrivateNetwork(argc, argv, [] { return RUN_ALL_TESTS(); });
}
