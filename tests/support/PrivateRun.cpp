#include "support/Namespace.h"
#include "support/NetworkMain.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>

int testnet::runInPrivateNetwork(int argc, char **argv, const std::function<int()> &run) {
    testing::InitGoogleTest(&argc, argv);
    if (GTEST_FLAG_GET(list_tests))
        return RUN_ALL_TESTS();
    const std::string failure = enterPrivateNetwork();
    if (failure.empty())
        return run();
    const char *ci = std::getenv("CI");
    const bool mustRun = ci != nullptr && std::strcmp(ci, "true") == 0;
    std::fprintf(stderr, "%s: %s\n", mustRun ? "FAILED" : "SKIPPED", failure.c_str());
    return mustRun ? 1 : 77;
}
