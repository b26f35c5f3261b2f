#include "camsim/ProgramOptions.h"

#include "TextValues.h"

#include <algorithm>
#include <utility>

namespace camsim {
namespace {

const char usage[] = R"(gvcamsim - simulated GigE Vision cameras on a network interface

Usage:
    gvcamsim --interface IF [OPTION]...

The cameras answer on the interface as real ones do: to discovery, FORCEIP, the
vendor IP-configuration command and register and memory access. Their addresses
are set on the interface and removed again at the end, which takes the right to
administer the network (CAP_NET_ADMIN). The program runs until SIGINT or SIGTERM.

When the cameras answer, it prints the seed of the faults, one line per camera
and then "ready".

Options:
    --interface IF
        Network interface of the cameras. It must be up.
    --camera KEY=VALUE[,KEY=VALUE]...
        Adds a camera; may be repeated. "\," is a comma inside a value. Without
        --camera and --scene there is one camera with a link-local address.
    --scene FILE
        Adds the cameras of a scene file; may be repeated.
    --faults KEY=VALUE[,KEY=VALUE]...
        Spoils the traffic of all cameras. Goes before the scene's faults.
    --seed N
        Seed of the faults, to repeat a run. By default one is drawn.
    --unmanaged
        Leaves the interface's addresses alone. For addresses of 127.0.0.0/8 on
        "lo", the default interface then; needs no rights.
    --port N
        UDP port of the cameras with --unmanaged, 0 for any. Default 3956.
    --help, --version
        Prints this text, or the version.

Exit status:
    0 after SIGINT or SIGTERM, 1 when something failed, 2 for a wrong option.

Examples:
    gvcamsim --interface cam0 --camera ip=192.168.1.10/24,name=left
    gvcamsim --interface cam0 --camera ip=10.0.0.1/8,count=1000
    gvcamsim --unmanaged --port 0 --camera forced=127.0.0.10/8
    gvcamsim --interface cam0 --faults loss-from-camera=20,delay=1-30 --seed 7

Scene file:
    Sections [camera] (one per camera) and [faults], each followed by lines
    "key = value" with the keys below. Lines that start with # or ; are comments.

        [camera]
        mac = 02:5A:E3:01:02:03
        ip = 192.168.1.10/24 via 192.168.1.1
        held-by = 192.168.1.77:50000 exclusive

        [faults]
        loss-from-camera = 5
)";

/// The arguments one after the other, "--option=value" like "--option value".
class ArgumentReader {
public:
    explicit ArgumentReader(const std::vector<std::string> &arguments) : arguments_(arguments) {}

    /// Moves to the next option; false at the end.
    bool next() {
        if (position_ == arguments_.size())
            return false;
        option_ = arguments_[position_++];
        const auto equals = option_.find('=');
        hasValue_ = option_.rfind("--", 0) == 0 && equals != std::string::npos;
        if (hasValue_) {
            value_ = option_.substr(equals + 1);
            option_.resize(equals);
        }
        return true;
    }

    const std::string &option() const { return option_; }

    std::string value(const char *expected) {
        if (hasValue_)
            return value_;
        if (position_ == arguments_.size())
            throw UsageError(option_ + ": the value is missing; expected " + expected);
        return arguments_[position_++];
    }

    void expectNoValue() const {
        if (hasValue_)
            throw UsageError(option_ + ": takes no value");
    }

private:
    const std::vector<std::string> &arguments_;
    std::size_t position_ = 0;
    std::string option_;
    std::string value_;
    bool hasValue_ = false;
};

/// Collects what the options say; conflicts are found when all are read.
class OptionsBuilder {
public:
    void apply(ArgumentReader &reader) {
        if (!applyFlag(reader))
            applyValue(reader);
    }

    ProgramOptions finish() {
        if (options_.help || options_.version)
            return std::move(options_);
        const bool managed = options_.simulator.mode == AddressMode::Managed;
        if (managed && options_.simulator.interface.empty())
            throw UsageError("--interface: missing; expected the name of a network interface");
        if (managed && portGiven_)
            throw UsageError("--port: only with --unmanaged; managed cameras answer on port 3956");
        if (!managed && options_.simulator.interface.empty())
            options_.simulator.interface = "lo";
        if (options_.scene.cameras.empty())
            options_.scene.cameras.push_back(defaultCamera());
        if (faults_)
            options_.scene.faults = *faults_;
        return std::move(options_);
    }

    OptionsBuilder() {
        options_.simulator.interface.clear();
        options_.simulator.mode = AddressMode::Managed;
    }

private:
    bool applyFlag(ArgumentReader &reader) {
        const std::string &option = reader.option();
        if (option == "--help")
            options_.help = true;
        else if (option == "--version")
            options_.version = true;
        else if (option == "--unmanaged")
            options_.simulator.mode = AddressMode::Unmanaged;
        else
            return false;
        reader.expectNoValue();
        return true;
    }

    void applyValue(ArgumentReader &reader) {
        const std::string option = reader.option();
        if (option == "--interface")
            options_.simulator.interface = reader.value("the name of a network interface");
        else if (option == "--camera")
            addCameras(parseCameras(reader.value("key=value,...")));
        else if (option == "--scene")
            addScene(loadScene(reader.value("a file name")));
        else if (option == "--faults")
            faults_ = parseFaults(reader.value("key=value,..."));
        else if (option == "--seed")
            options_.simulator.seed = toNumber(reader.value("a number"), FaultConfig::unlimited);
        else if (option == "--port")
            setPort(toNumber(reader.value("a port number"), 65535));
        else
            throw UsageError("unknown option '" + option + "'");
    }

    void addCameras(const std::vector<CameraConfig> &cameras) {
        options_.scene.cameras.insert(options_.scene.cameras.end(), cameras.begin(), cameras.end());
    }

    void addScene(const Scene &scene) {
        addCameras(scene.cameras);
        options_.scene.faults = scene.faults;
    }

    void setPort(std::uint64_t port) {
        options_.simulator.port = static_cast<std::uint16_t>(port);
        portGiven_ = true;
    }

    ProgramOptions options_;
    std::optional<FaultConfig> faults_;
    bool portGiven_ = false;
};

} // namespace

ProgramOptions ProgramOptions::parse(const std::vector<std::string> &arguments) {
    ArgumentReader reader(arguments);
    OptionsBuilder builder;
    while (reader.next()) {
        const std::string option = reader.option();
        try {
            builder.apply(reader);
        } catch (const SceneError &error) {
            throw UsageError(option + ": " + error.what());
        } catch (const std::invalid_argument &error) {
            throw UsageError(option + ": " + error.what());
        }
    }
    return builder.finish();
}

std::string ProgramOptions::helpText() {
    return usage + std::string("\nCamera keys:\n") + cameraKeysHelp() + "\nFault keys:\n" + faultKeysHelp();
}

} // namespace camsim
