#pragma once

#include "camsim/CameraConfig.h"
#include "camsim/FaultConfig.h"

#include <iosfwd>
#include <stdexcept>
#include <string>
#include <vector>

namespace camsim {

/// Text that describes cameras or faults wrongly; the message names the place, the key and what was expected.
class SceneError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Cameras and faults described as text.
struct Scene {
    std::vector<CameraConfig> cameras;
    FaultConfig faults;
};

/// Reads an INI-like text: sections [camera] and [faults] of "key = value" lines, "#" or ";" starts a comment line.
/// `name` stands in the messages. Throws SceneError.
Scene readScene(std::istream &text, const std::string &name);
/// Reads a file. Throws SceneError, also when the file cannot be read.
Scene loadScene(const std::string &path);

/// Reads "key=value,key=value" (a "\," is a comma inside a value) over defaultCamera(); `count=N` gives N cameras with
/// MAC, addresses and serial counted up. Throws SceneError.
std::vector<CameraConfig> parseCameras(const std::string &text);
/// Reads "key=value,key=value". Throws SceneError.
FaultConfig parseFaults(const std::string &text);

/// Description of all keys for a help text, one per line.
std::string cameraKeysHelp();
std::string faultKeysHelp();

} // namespace camsim
