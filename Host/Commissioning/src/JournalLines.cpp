#include "JournalLines.h"

#include "commissioning/AddressRules.h"
#include "commissioning/AddressText.h"
#include "commissioning/Parsing.h"
#include "commissioning/Words.h"

#include <nlohmann/json.hpp>

#include <array>
#include <limits>
#include <map>
#include <stdexcept>
#include <string_view>

namespace commissioning {

namespace {

using Json = nlohmann::ordered_json;

/// Longer than any line of ours: a name has 16 bytes, a text some hundred.
constexpr std::size_t MaxLine = 65536;

constexpr std::array<Mode, 3> Modes = {Mode::Static, Mode::Dhcp, Mode::Auto};
constexpr std::array<Fate, 5> Fates = {Fate::Open, Fate::Done, Fate::Failed, Fate::Unconfirmed, Fate::RolledBack};
constexpr std::array<Path, 4> Paths = {Path::None, Path::Broadcast, Path::Unicast, Path::Force};

Json jsonOf(const StoredAddresses &addresses) {
    return {{"address", toText(addresses.address)},
            {"mask", toText(addresses.mask)},
            {"gateway", toText(addresses.gateway)}};
}

Json jsonOf(const Snapshot &snapshot) {
    return {{"word", snapshot.word},
            {"current", jsonOf(snapshot.current)},
            {"stored", snapshot.stored ? jsonOf(*snapshot.stored) : Json()},
            {"name", snapshot.name}};
}

Json jsonOf(const Settings &settings) {
    Json json = jsonOf(StoredAddresses{settings.address, settings.mask, settings.gateway});
    json["mode"] = settings.mode ? Json(toText(*settings.mode)) : Json();
    json["name"] = settings.name;
    return json;
}

std::string printed(const Json &json) { return json.dump(-1, ' ', true, Json::error_handler_t::replace); }

// Reading. Whatever is not as it should be throws.

struct NoEntry : std::runtime_error {
    NoEntry() : std::runtime_error("no entry of a journal") {}
};

template <typename Value> Value orThrow(const std::optional<Value> &value) {
    if (!value)
        throw NoEntry();
    return *value;
}

std::string textIn(const Json &json, const char *key) { return json.at(key).get_ref<const std::string &>(); }

template <typename Values> auto wordIn(const Json &json, const char *key, const Values &values) {
    const std::string text = textIn(json, key);
    for (const auto value : values) {
        if (text == toText(value))
            return value;
    }
    throw NoEntry();
}

std::uint32_t numberIn(const Json &json, const char *key) {
    const Json &number = json.at(key);
    if (!number.is_number_unsigned() || number.get<std::uint64_t>() > std::numeric_limits<std::uint32_t>::max())
        throw NoEntry();
    return number.get<std::uint32_t>();
}

Address addressIn(const Json &json, const char *key) { return orThrow(addressFrom(textIn(json, key))); }

StoredAddresses addressesOf(const Json &json) {
    return {addressIn(json, "address"), addressIn(json, "mask"), addressIn(json, "gateway")};
}

Snapshot snapshotOf(const Json &json) {
    const Json &stored = json.at("stored");
    return {numberIn(json, "word"), addressesOf(json.at("current")),
            stored.is_null() ? std::nullopt : std::optional(addressesOf(stored)), textIn(json, "name")};
}

Settings settingsOf(const Json &json) {
    const auto [address, mask, gateway] = addressesOf(json);
    const auto mode = json.at("mode").is_null() ? std::nullopt : std::optional(wordIn(json, "mode", Modes));
    return {mode, address, mask, gateway, textIn(json, "name")};
}

std::string macIn(const Json &json) {
    const std::string mac = macFrom(textIn(json, "camera"));
    return mac.empty() ? throw NoEntry() : mac;
}

JournalEntry begun(const Json &json) {
    JournalEntry entry;
    entry.id = textIn(json, "begin");
    entry.plan = textIn(json, "plan");
    entry.undoes = textIn(json, "undoes");
    if (json.contains("file")) // older lines have none
        entry.file = textIn(json, "file");
    entry.time = textIn(json, "time");
    entry.mac = macIn(json);
    entry.what = textIn(json, "what");
    entry.before = snapshotOf(json.at("before"));
    entry.wanted = settingsOf(json.at("wanted"));
    return entry;
}

void finish(const Json &json, JournalEntry *pEntry) {
    JournalEntry entry = *pEntry;
    entry.fate = wordIn(json, "fate", Fates);
    entry.path = wordIn(json, "path", Paths);
    if (const Json &after = json.at("after"); !after.is_null())
        entry.after = snapshotOf(after);
    entry.text = textIn(json, "text");
    *pEntry = std::move(entry);
}

/// Takes the lines one after another.
class Reader {
public:
    void take(std::string_view line) {
        ++m_Number;
        if (!line.empty() && !isTaken(line))
            m_Content.unreadable.push_back(m_Number);
    }
    JournalContent &content() { return m_Content; }

private:
    bool isTaken(std::string_view line) {
        if (line.size() > MaxLine)
            return false;
        const Json json = Json::parse(line, nullptr, false);
        try {
            return json.is_object() && (json.contains("end") ? isEnd(json) : isBegin(json));
        } catch (const std::exception &) { // NoEntry, or of the JSON library
            return false;
        }
    }

    bool isBegin(const Json &json) {
        m_Content.entries.push_back(begun(json));
        m_Indices[m_Content.entries.back().id] = m_Content.entries.size() - 1;
        return true;
    }

    bool isEnd(const Json &json) {
        const auto found = m_Indices.find(textIn(json, "end"));
        if (found == m_Indices.end())
            return false;
        finish(json, &m_Content.entries[found->second]);
        return true;
    }

    JournalContent m_Content;
    std::map<std::string, std::size_t> m_Indices; ///< of entries, by id
    std::size_t m_Number = 0;
};

} // namespace

std::string beginLine(const JournalEntry &entry) {
    return printed({{"begin", entry.id},
                    {"plan", entry.plan},
                    {"undoes", entry.undoes},
                    {"file", entry.file},
                    {"time", entry.time},
                    {"camera", macText(entry.mac)},
                    {"what", entry.what},
                    {"before", jsonOf(entry.before)},
                    {"wanted", jsonOf(entry.wanted)}});
}

std::string endLine(const JournalEntry &entry) {
    return printed({{"end", entry.id},
                    {"fate", toText(entry.fate)},
                    {"path", toText(entry.path)},
                    {"after", entry.after ? jsonOf(*entry.after) : Json()},
                    {"text", entry.text}});
}

std::string asJournalled(const std::string &text) { return Json::parse(printed(text)).get<std::string>(); }

JournalContent readJournal(const std::string &text) {
    Reader reader;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        reader.take(std::string_view(text).substr(start, end - start));
        start = end + 1;
    }
    return std::move(reader.content());
}

} // namespace commissioning
