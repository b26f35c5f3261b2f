#include "Ruleset.h"

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <tuple>

namespace commissioning {

namespace {

using Json = nlohmann::json;

/// A UDP datagram that comes in over IPv4.
struct Datagram {
    int sourcePort;
    int destinationPort;
    std::string adapter;
};

constexpr int CameraPort = 3956;
constexpr int SearchPort = 40000; // stands for the port of the kernel's choice

/// What may become of a datagram in a rule or chain: one or several of these.
using Outcomes = unsigned;
constexpr Outcomes Accepts = 1;
constexpr Outcomes Drops = 2;
constexpr Outcomes GoesOn = 4;
constexpr Outcomes Returns = 8;
constexpr Outcomes Anything = Accepts | Drops | GoesOn;

enum class Match { No, Yes, Maybe };

std::string textOf(const Json &object, const char *key) {
    const auto found = object.find(key);
    return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

Match judged(bool isEqual) { return isEqual ? Match::Yes : Match::No; }

Match equalOne(int value, const Json &right) {
    if (right.is_number_integer())
        return judged(right.get<std::int64_t>() == value);
    const auto range = right.is_object() ? right.find("range") : right.end();
    const bool isRange = range != right.end() && range->is_array() && range->size() == 2 &&
                         (*range)[0].is_number_integer() && (*range)[1].is_number_integer();
    if (!isRange)
        return Match::Maybe;
    return judged((*range)[0].get<std::int64_t>() <= value && value <= (*range)[1].get<std::int64_t>());
}

/// The name of a set begins with '@', a name with a star stands for several.
Match equalOne(const std::string &value, const Json &right) {
    const std::string text = right.is_string() ? right.get<std::string>() : "@";
    return text.find_first_of("@*") != std::string::npos ? Match::Maybe : judged(text == value);
}

template <class Value> Match equal(const Value &value, const Json &right) {
    const bool isSet = right.is_object() && right.contains("set");
    if (!right.is_array() && !isSet)
        return equalOne(value, right);
    Match result = Match::No;
    for (const Json &element : isSet ? right["set"] : right) {
        const Match one = equal(value, element);
        if (one == Match::Yes)
            return one;
        result = one == Match::No ? result : one;
    }
    return result;
}

Match matchPayload(const Json &payload, const Json &right, const Datagram &datagram) {
    const std::string protocol = textOf(payload, "protocol");
    const std::string field = textOf(payload, "field");
    if (protocol == "udp" || protocol == "th") {
        if (field == "sport" || field == "dport")
            return equal(field == "sport" ? datagram.sourcePort : datagram.destinationPort, right);
        return Match::Maybe;
    }
    if (protocol == "ip")
        return field == "protocol" ? equal<std::string>("udp", right) : Match::Maybe;
    return protocol == "ether" ? Match::Maybe : Match::No; // of another protocol
}

Match matchMeta(const std::string &key, const Json &right, const Datagram &datagram) {
    if (key == "l4proto")
        return equal<std::string>("udp", right);
    if (key == "nfproto")
        return equal<std::string>("ipv4", right);
    if (key == "protocol")
        return equal<std::string>("ip", right);
    return key == "iifname" || key == "iif" ? equal(datagram.adapter, right) : Match::Maybe;
}

/// Of one expression: whether the datagram fits, where "udp sport != 1" turns the answer round.
Match matchOf(const Json &match, const Datagram &datagram) {
    const auto left = match.find("left");
    const auto right = match.find("right");
    const std::string op = textOf(match, "op");
    if (left == match.end() || !left->is_object() || right == match.end() || (op != "==" && op != "in" && op != "!="))
        return Match::Maybe;
    Match result = Match::Maybe;
    if (const auto payload = left->find("payload"); payload != left->end() && payload->is_object())
        result = matchPayload(*payload, *right, datagram);
    else if (const auto meta = left->find("meta"); meta != left->end() && meta->is_object())
        result = matchMeta(textOf(*meta, "key"), *right, datagram);
    else if (const auto ct = left->find("ct"); ct != left->end() && ct->is_object() && textOf(*ct, "key") == "state")
        result = equal<std::string>("new", *right); // the answer to a broadcast belongs to no connection
    if (op != "!=" || result == Match::Maybe)
        return result;
    return result == Match::Yes ? Match::No : Match::Yes;
}

class Ruleset {
public:
    explicit Ruleset(const Json &document) {
        for (const Json &entry : document) {
            if (!entry.is_object())
                continue;
            if (const auto chain = entry.find("chain"); chain != entry.end() && isOurs(*chain))
                m_Chains[nameOf(*chain, "name")].definition = *chain;
            if (const auto rule = entry.find("rule"); rule != entry.end() && isOurs(*rule) && rule->contains("expr"))
                m_Chains[nameOf(*rule, "chain")].rules.push_back((*rule)["expr"]);
        }
    }

    bool hasTable(const std::string &name) const { return has(1, name); }
    bool hasChain(const std::string &name) const { return has(2, name); }

    /// Calls a function with the name of each base chain that datagrams for this host pass, and what it does.
    template <class Function> void judge(const Datagram &datagram, Function function) {
        m_Walked.clear();
        for (const auto &[name, chain] : m_Chains) {
            const std::string hook = textOf(chain.definition, "hook");
            if (hook != "prerouting" && hook != "input")
                continue;
            Outcomes outcomes = walk(chain, datagram, 0);
            if ((outcomes & GoesOn) != 0)
                outcomes = (outcomes & ~GoesOn) | (textOf(chain.definition, "policy") == "drop" ? Drops : Accepts);
            const auto &[family, table, own] = name;
            std::string full = family;
            function(full.append(" ").append(table).append(" ").append(own), outcomes);
        }
    }

private:
    using Name = std::tuple<std::string, std::string, std::string>; // family, table, chain
    struct Chain {
        Json definition = Json::object();
        std::vector<Json> rules;
    };

    static bool isOurs(const Json &object) {
        const std::string family = object.is_object() ? textOf(object, "family") : "";
        return family == "ip" || family == "inet";
    }
    static Name nameOf(const Json &object, const char *key) {
        return {textOf(object, "family"), textOf(object, "table"), textOf(object, key)};
    }
    bool has(int part, const std::string &start) const {
        for (const auto &[name, chain] : m_Chains) {
            if ((part == 1 ? std::get<1>(name) : std::get<2>(name)).rfind(start, 0) == 0)
                return true;
        }
        return false;
    }

    /// What a chain does; "going on" is reaching its end or returning from it.
    Outcomes walk(const Chain &chain, const Datagram &datagram, int depth) {
        Outcomes possible = GoesOn;
        for (const Json &rule : chain.rules) {
            if ((possible & GoesOn) == 0)
                break;
            possible = (possible & ~GoesOn) | apply(rule, chain, datagram, depth);
        }
        return (possible & Returns) != 0 ? (possible & ~Returns) | GoesOn : possible;
    }
    Outcomes apply(const Json &rule, const Chain &chain, const Datagram &datagram, int depth) {
        if (!rule.is_array())
            return Anything;
        bool isSure = true;
        for (const Json &expression : rule) {
            if (!expression.is_object() || expression.empty())
                continue;
            const std::string kind = expression.begin().key();
            const Json &value = expression.begin().value();
            const Match match = kind == "match" && value.is_object() ? matchOf(value, datagram)
                                : isKnownStatement(kind)             ? Match::Yes
                                                                     : Match::Maybe;
            if (match == Match::No)
                return GoesOn;
            isSure = isSure && match == Match::Yes;
            if (const Outcomes outcomes = verdict(kind, value, chain, datagram, depth))
                return isSure ? outcomes : outcomes | GoesOn;
        }
        return GoesOn;
    }
    static bool isKnownStatement(const std::string &kind) {
        for (const char *known : {"accept", "drop", "reject", "return", "continue", "jump", "goto", "counter", "log",
                                  "notrack", "mangle", "comment", "queue", "vmap"}) {
            if (kind == known)
                return true;
        }
        return false;
    }
    /// 0 when the expression is no verdict.
    Outcomes verdict(const std::string &kind, const Json &value, const Chain &chain, const Datagram &datagram,
                     int depth) {
        if (kind == "accept")
            return Accepts;
        if (kind == "drop" || kind == "reject")
            return Drops;
        if (kind == "return")
            return Returns;
        if (kind == "vmap" || kind == "queue")
            return Anything;
        if (kind != "jump" && kind != "goto")
            return 0;
        Name name = nameOf(chain.definition, "name");
        std::get<2>(name) = value.is_object() ? textOf(value, "target") : "";
        const auto target = m_Chains.find(name);
        constexpr int MaxDepth = 16; // the kernel's
        if (target == m_Chains.end() || depth == MaxDepth)
            return Anything;
        // A chain does the same wherever it is jumped to from; one that leads to itself, which the kernel refuses,
        // anything.
        const auto [walked, isNew] = m_Walked.emplace(name, Anything);
        if (isNew)
            walked->second = walk(target->second, datagram, depth + 1);
        const Outcomes outcomes = walked->second;
        return kind == "goto" && (outcomes & GoesOn) != 0 ? (outcomes & ~GoesOn) | Returns : outcomes;
    }

    std::map<Name, Chain> m_Chains;
    std::map<Name, Outcomes> m_Walked; ///< by the datagram that is being judged
};

} // namespace

std::optional<Firewall> judgeRuleset(std::string_view text, const std::vector<std::string> &adapters) {
    const auto isShallow = [](int depth, Json::parse_event_t, Json &) { return depth < 64; };
    const Json document = Json::parse(text, isShallow, false);
    if (!document.is_object() || !document.contains("nftables"))
        return {};
    Ruleset ruleset(document["nftables"]);
    Firewall firewall;
    firewall.ownRequestsPass = true;
    const auto isListed = [&](const std::string &chain) {
        return std::find(firewall.droppingChains.begin(), firewall.droppingChains.end(), chain) !=
               firewall.droppingChains.end();
    };
    for (const std::string &adapter : adapters) {
        ruleset.judge({CameraPort, SearchPort, adapter}, [&](const std::string &chain, Outcomes outcomes) {
            firewall.manager = Firewall::Manager::Nftables;
            firewall.mayDrop = firewall.mayDrop || (outcomes & Drops) != 0;
            if (outcomes == Drops && !isListed(chain))
                firewall.droppingChains.push_back(chain);
        });
        ruleset.judge({SearchPort, CameraPort, adapter}, [&](const std::string &, Outcomes outcomes) {
            firewall.ownRequestsPass = firewall.ownRequestsPass && outcomes == Accepts;
        });
    }
    firewall.drops = !firewall.droppingChains.empty();
    if (ruleset.hasTable("firewalld"))
        firewall.manager = Firewall::Manager::Firewalld;
    else if (ruleset.hasChain("ufw-"))
        firewall.manager = Firewall::Manager::Ufw;
    return firewall;
}

} // namespace commissioning
