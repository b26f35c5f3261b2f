// main() of the tests that need a network of their own. Where the machine allows no namespaces they are skipped
// (exit status 77), unless CI=true makes that a failure.

#include "support/Namespace.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    if (GTEST_FLAG_GET(list_tests))
        return RUN_ALL_TESTS();
    const std::string failure = testnet::enterPrivateNetwork();
    if (failure.empty())
        return RUN_ALL_TESTS();
    const char *ci = std::getenv("CI");
    const bool mustRun = ci && std::strcmp(ci, "true") == 0;
    std::fprintf(stderr, "%s: %s\n", mustRun ? "FAILED" : "SKIPPED", failure.c_str());
    return mustRun ? 1 : 77;
}
