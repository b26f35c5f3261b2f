#include "Json.h"

#include "commissioning/AddressText.h"
#include "commissioning/Words.h"

using namespace commissioning;

namespace commandline {

Json textOrNull(const std::string &text) { return text.empty() ? Json() : Json(text); }

Json addressJson(Address address) { return address == 0 ? Json() : Json(toText(address)); }

Json numberOrNull(int number) { return number == 0 ? Json() : Json(number); }

Json storedJson(const StoredAddresses &stored) {
    return {{"address", toText(stored.address)}, {"mask", toText(stored.mask)}, {"gateway", toText(stored.gateway)}};
}

namespace {

constexpr int Format = 1;

template <typename Value> Json orNull(const std::optional<Value> &value) { return value ? Json(*value) : Json(); }

template <typename Values, typename Convert> Json arrayOf(const Values &values, Convert &&convert) {
    Json array = Json::array();
    for (const auto &value : values)
        array.push_back(convert(value));
    return array;
}

Json adapterJson(const Adapter &adapter) {
    return {{"name", adapter.name},
            {"mac", textOrNull(macText(adapter.mac))},
            {"kind", toText(adapter.kind)},
            {"up", adapter.isUp},
            {"carrier", adapter.hasCarrier},
            {"mtu", adapter.mtu},
            {"addresses", arrayOf(adapter.addresses, [](const AdapterAddress &entry) { return toText(entry); })},
            {"rp_filter", adapter.rpFilter},
            {"speed", orNull(adapter.speed_Mbit_s)}};
}

Json holderJson(const Holder &holder) {
    const Json process =
        holder.process ? Json{{"id", holder.process->id}, {"name", textOrNull(holder.process->name)}} : Json();
    return {{"address", addressJson(holder.address)}, {"port", holder.port}, {"process", process}};
}

} // namespace

Json cameraJson(const Camera &camera) {
    return {{"mac", macText(camera.mac)},
            {"vendor", camera.vendor},
            {"model", camera.model},
            {"serial", camera.serial},
            {"name", camera.name},
            {"adapters", camera.adapters},
            {"address", addressJson(camera.address)},
            {"mask", addressJson(camera.mask)},
            {"gateway", addressJson(camera.gateway)},
            {"mode", camera.mode ? Json(toText(*camera.mode)) : Json()},
            {"modes", arrayOf(camera.modes, [](Mode mode) { return toText(mode); })},
            {"status", toText(camera.status)},
            {"status_reason", textOrNull(camera.statusReason)},
            {"holder", camera.holder ? holderJson(*camera.holder) : Json()},
            {"stored", camera.stored ? storedJson(*camera.stored) : Json()},
            {"hidden", camera.hidden}};
}

Json findingJson(const Finding &finding) {
    Json evidence = Json::object();
    for (const auto &[name, value] : finding.evidence)
        evidence[name] = std::visit([](const auto &plain) { return Json(plain); }, value);
    return {{"code", finding.code},
            {"severity", toText(finding.severity)},
            {"adapter", textOrNull(finding.adapter)},
            {"camera", textOrNull(macText(finding.camera))},
            {"evidence", evidence},
            {"text", finding.text},
            {"remedies", finding.remedies}};
}

Json inventoryJson(const Inventory &inventory) {
    return {{"format", Format},
            {"adapters", arrayOf(inventory.adapters, adapterJson)},
            {"cameras", arrayOf(inventory.cameras, cameraJson)},
            {"findings", arrayOf(inventory.findings, findingJson)},
            {"changes", Json::array()},
            {"plan", nullptr},
            {"log", nullptr},
            {"report", nullptr},
            {"error", nullptr}};
}

Json errorJson(int exitCode, const std::string &text) {
    Json json = inventoryJson({});
    json["error"] = {{"code", exitCode}, {"text", text}};
    return json;
}

std::string printed(const Json &json) { return json.dump(2, ' ', true, Json::error_handler_t::replace) + '\n'; }

std::string printedLine(const Json &json) { return json.dump(-1, ' ', true, Json::error_handler_t::replace) + '\n'; }

} // namespace commandline
