// A camera whose memory is the input: the bits of the first byte choose how it serves reads, then come its two URLs,
// each up to a zero, the rest is the memory from 0x10000 on. Its description is downloaded and unzipped.
// fuzz_local_url -max_len=4096 -rss_limit_mb=2048 -malloc_limit_mb=256 -timeout=10 CORPUS seeds/fuzz_local_url

#include "FuzzInput.h"
#include "support/ScriptedNetwork.h"

#include "Base/GCException.h"
#include "MinimalCorvoGigETL/QuorelGigEDeviceInfo.h"
#include "MinimalCorvoGigETL/XmlFileProvider.h"
#include "MinimalCorvoGigETL/tools.h"
#include "gxapi/GvcpMessages.h"

using namespace Corvo;

namespace {

constexpr std::uint32_t FileAddress = 0x10000;
constexpr std::size_t UrlSize = 512;
constexpr std::uint16_t InvalidAddress = 0x8003;

struct Camera {
    bool onlyWholeWords;
    bool endsAnywhere; ///< else its memory is filled up to a word
    std::string urls[2];
    Bytes file;

    /// Nothing for an address it does not have.
    Bytes Read(std::uint32_t address, std::size_t size) const {
        if (onlyWholeWords && (address % 4 != 0 || size % 4 != 0))
            return {};
        if (address < FileAddress)
            return ReadRegisters(address, size);
        const std::size_t end = endsAnywhere ? file.size() : (file.size() + 3) / 4 * 4;
        const std::size_t offset = address - FileAddress;
        if (offset > end || size > end - offset)
            return {};
        Bytes bytes(file.begin() + static_cast<std::ptrdiff_t>(std::min(offset, file.size())), file.end());
        bytes.resize(size);
        return bytes;
    }

    int Answer(ScriptedNetwork &network, const Bytes &request) const {
        const bool isMemory = Half(request, 2) == TAG_READMEM_CMD;
        const Bytes data = Read(Word(request, 8), isMemory ? Half(request, 14) : 4u);
        Bytes answer(8);
        if (isMemory)
            answer.insert(answer.end(), request.begin() + 8, request.begin() + 12);
        answer.insert(answer.end(), data.begin(), data.end());
        PutHalf(answer, 0, data.empty() ? InvalidAddress : 0);
        PutHalf(answer, 2, Half(request, 2) + 1u);
        PutHalf(answer, 4, answer.size() - 8);
        PutHalf(answer, 6, Half(request, 6));
        network.answer(std::move(answer));
        return 0;
    }

private:
    Bytes ReadRegisters(std::uint32_t address, std::size_t size) const {
        const bool isUrl = address == GEV_REG_FIRST_URL || address == GEV_REG_SECOND_URL;
        if (size != (isUrl ? UrlSize : 4))
            return {};
        const std::string url = isUrl ? urls[address == GEV_REG_FIRST_URL ? 0 : 1] : "";
        Bytes bytes(url.begin(), url.end());
        bytes.resize(size);
        return bytes;
    }
};

void CheckUrl(const std::string &url) {
    String_t name = "before";
    String_t extension = "before";
    unsigned int address = 1;
    std::size_t length = 2;
    if (!SplitLocalUrl(url, name, extension, address, length)) {
        Require(name == "before" && extension == "before" && address == 1 && length == 2, "outputs after a failure");
        return;
    }
    Require(extension.size() > 0 && extension[0] == '.' && extension.find(";") == String_t::npos, "an extension");
    Require(url.find((name + extension + ";").c_str()) != std::string::npos, "a file name");
}

template <class Action> void Try(Action action) {
    try {
        action();
    } catch (const GenICam::GenericException &) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
    FuzzInput input(bytes, size);
    const unsigned choice = input.Byte();
    Camera camera{(choice & 1) != 0, (choice & 2) != 0, {input.Text(), input.Text()}, {}};
    camera.file = input.Rest();
    for (const std::string &url : camera.urls)
        CheckUrl(url);
    ScriptedNetwork network([&](const Bytes &request) { return camera.Answer(network, request); });
    CQuorelGigEDeviceInfo info;
    info.SetAddress("127.0.0.1:3956");
    Try([&] {
        Bytes file;
        XmlFileProviderPrivateImpl().ProvideXmlFileRaw(info, file);
        if (file.size() <= 4 || file.size() == UrlSize) // perhaps a register
            return;
        Bytes memory = camera.file;
        memory.resize(memory.size() + 3);
        Require(std::search(memory.begin(), memory.end(), file.begin(), file.end()) != memory.end(),
                "another file than the camera's");
    });
    Try([&] {
        String_t name;
        String_t text;
        XmlFileProviderPrivateImpl().ProvideXmlFile(info, name, text);
        Require(name.empty() && !text.empty(), "a file on this computer, or nothing");
    });
    return 0;
}
