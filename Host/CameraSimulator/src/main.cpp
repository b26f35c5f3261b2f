#include "camsim/ProgramOptions.h"
#include "camsim/Simulator.h"

#include <algorithm>
#include <csignal>
#include <exception>
#include <iostream>
#include <stdexcept>

namespace {

using namespace camsim;

void printCameras(const Simulator &simulator, const SimulatorOptions &options) {
    std::cout << "seed " << simulator.seed() << '\n';
    std::cout << "interface " << options.interface << " port " << simulator.port() << '\n';
    for (const MacAddress &mac : simulator.cameras()) {
        const CameraStatus status = simulator.status(mac);
        std::cout << "camera " << mac.toString() << ' ';
        if (status.current)
            std::cout << status.current->address.toString() << '/' << status.current->prefixLength();
        else
            std::cout << "no address yet";
        std::cout << (status.holder ? " held by " + status.holder->application.toString() : "") << '\n';
    }
    std::cout << "ready" << std::endl;
}

int run(const ProgramOptions &options) {
    sigset_t ends; // blocked before the simulator's thread starts, so that sigwait() alone gets them
    sigemptyset(&ends);
    sigaddset(&ends, SIGINT);
    sigaddset(&ends, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &ends, nullptr);

    Simulator simulator(options.simulator);
    simulator.setFaults(options.scene.faults);
    simulator.addCameras(options.scene.cameras);
    simulator.start();
    printCameras(simulator, options.simulator);
    int signal = 0;
    sigwait(&ends, &signal);
    simulator.stop();
    return 0;
}

} // namespace

int main(int argc, char **argv) {
    try {
        const ProgramOptions options = ProgramOptions::parse({argv + std::min(argc, 1), argv + argc});
        if (options.help)
            std::cout << ProgramOptions::helpText();
        else if (options.version)
            std::cout << "gvcamsim " CAMSIM_VERSION "\n";
        else
            return run(options);
        return 0;
    } catch (const UsageError &error) {
        std::cerr << "gvcamsim: " << error.what() << "\nTry 'gvcamsim --help'.\n";
        return 2;
    } catch (const std::exception &error) {
        std::cerr << "gvcamsim: " << error.what() << '\n';
        return 1;
    }
}
