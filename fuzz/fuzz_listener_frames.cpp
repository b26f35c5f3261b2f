// A frame as a packet socket gives it: what lanvane-listen tells of it must be a line that its reader takes.
// fuzz_listener_frames -max_len=2048 -timeout=5 CORPUS seeds/fuzz_listener_frames

#include "FuzzInput.h"

#include "Frame.h"
#include "commissioning/ListenerClient.h"

#include <cctype>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const auto acknowledge = listener::readFrame(data, size);
    if (!acknowledge)
        return 0;
    Require(acknowledge->info >= data && acknowledge->info + listener::InfoSize <= data + size, "bytes past the frame");
    const std::string line = listener::acknowledgeLine("nic0", 1, *acknowledge);
    for (std::size_t i = 0; i + 1 < line.size(); ++i)
        Require(std::isprint(static_cast<unsigned char>(line[i])) != 0, "a line that is no text");
    commissioning::ListenerLines lines;
    lines.add("ready nic0\n" + line);
    Require(lines.report().seen.size() == 1 && lines.report().seen[0].sender == acknowledge->sender, "an unread line");
    return 0;
}
