// main() of the system tests: a private network before anything else, then the application's surroundings.

#include "MinimalCorvo/CorvoBase.h"
#include "support/GuiApplication.h"
#include "support/NetworkMain.h"
#include "support/TestFolder.h"

#include <gtest/gtest.h>

int main(int argc, char *argv[]) {
    return testnet::runInPrivateNetwork(argc, argv, [&] {
        const TestFolder state;
        setenv("XDG_STATE_HOME", (state / "state").c_str(), 1); // of the trace log
        const bool hasDisplay = getenv("LANVANE_PICTURES") != nullptr;
        const GuiApplication application(argc, argv, hasDisplay ? "xcb" : "offscreen");
        Corvo::CorvoInitialize();
        const int result = RUN_ALL_TESTS();
        Corvo::CorvoTerminate(true);
        return result;
    });
}
