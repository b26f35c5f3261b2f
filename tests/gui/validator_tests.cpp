#include "Lanvane/AddressText.h"
#include "Lanvane/QIpAddressWithNetmaskValidator.h"
#include "Lanvane/QIpNetmaskValidator.h"
#include "Lanvane/QMacAddressValidator.h"
#include "Lanvane/ipaddresswidget.h"
#include "QtText.h"

#include <QLineEdit>

namespace {

constexpr QValidator::State Invalid = QValidator::Invalid;
constexpr QValidator::State Intermediate = QValidator::Intermediate;
constexpr QValidator::State Acceptable = QValidator::Acceptable;

using Texts = std::initializer_list<const char *>;

void expectState(const QValidator &validator, QValidator::State state, Texts texts) {
    for (const char *input : texts) {
        QString text = input;
        int pos = 0;
        EXPECT_EQ(validator.validate(text, pos), state) << '"' << input << '"';
    }
}

/// By which of the flags, each set alone, an address becomes acceptable.
QString flagsFor(const QString &mask, const QString &address) {
    using Validator = QIpAddressWithNetmaskValidator;
    const std::pair<const char *, void (Validator::*)(bool)> flags[] = {
        {"null", &Validator::setAllowNullAddress},
        {"loopback", &Validator::setAllowLoopbackAddress},
        {"broadcast", &Validator::setAllowBroadcastAddress},
        {"multicast", &Validator::setAllowMulticastAddress},
        {"experimental", &Validator::setAllowExperimentalPurposeAddress},
    };
    const QLineEdit maskEdit(mask);
    QStringList names;
    for (const auto &[name, allow] : flags) {
        Validator validator(&maskEdit);
        (validator.*allow)(true);
        QString text = address;
        int pos = 0;
        if (validator.validate(text, pos) == Acceptable)
            names << name;
    }
    return names.size() == 5 ? "any" : names.join(' ');
}

} // namespace

TEST(Validators, JudgeAddresses) {
    const QIpAddressValidator validator;
    expectState(validator, Acceptable, {"0.0.1.0", " 10.0.0.1 ", "192.168.001.089", "010.1.2.3", "255.255.255.255"});
    expectState(validator, Intermediate, {"", "1.2.3", "192.168.1.", "1.2..4", "1. .3.4", "0.0.0.7", "0.0.0.255"});
    // 0377 is sent as 377, although it is an octal 255.
    expectState(validator, Invalid, {"1.2.3.4.5", "1.2.3.256", "1.2.3.0377", "1.2.3.x", "::1.2.3.4"});
}

TEST(Validators, JudgeNetmasks) {
    const QIpNetmaskValidator validator;
    expectState(validator, Acceptable,
                {"/0", " /24 ", "/32", "128.0.0.0", "255.255.255.000", "255.255.254.0", "255.255.255.252"});
    expectState(validator, Intermediate,
                {"/", "/33", "/-1", "/x", "255.255.255", "0.0.0.0", "64.0.0.0", "255.255.255.254", "255.255.255.255",
                 "255.0.255.0", "255.255.255.1"});
    expectState(validator, Invalid, {"256.0.0.0"});
}

TEST(Validators, TurnPrefixLengthsIntoMasks) {
    const QIpNetmaskValidator validator;
    expectRewrites({"/0 -> 0.0.0.0", "/1 -> 128.0.0.0", " /24  -> 255.255.255.0", "/32 -> 255.255.255.255",
                    "/33 -> /33", "/ -> /", " 255.0.0.0 -> 255.0.0.0"},
                   [&](QString text) {
                       validator.fixup(text);
                       return text;
                   });
    for (const char *usable : {"/1", "/30", "255.255.0.0"})
        EXPECT_TRUE(validator.isUsable(usable)) << usable;
    for (const char *unusable : {"/0", "/31", "/32", "/33", "", "0.0.0.0"})
        EXPECT_FALSE(validator.isUsable(unusable)) << unusable;
}

TEST(Validators, JudgeAddressesWithNetmask) {
    // mask|address
    expectRewrites({"255.255.255.0|192.168.1.255 -> broadcast", "/23|10.0.1.255 -> broadcast", "|0.0.0.0 -> null",
                    "| -> null", "|127.0.0.1 -> loopback", "|127.255.255.255 -> loopback",
                    "255.0.0.0|224.0.0.0 -> multicast", "|239.255.255.255 -> multicast",
                    "255.255.255.0|240.0.0.0 -> experimental", "|255.255.255.255 -> experimental",
                    "255.255.0.0|192.168.1.255 -> any", "255.255.0.0|192.168.1.0 -> any", "|128.0.0.1 -> any",
                    "255.255.255.255|192.168.1.0 -> any", // no usable mask, nothing to judge
                    "|223.255.255.255 -> any", "/24|192.168.1.0 -> ", "/24|192.168.1. -> ", "/24|0.0.0.1 -> "},
                   [](const QString &line) { return flagsFor(line.section('|', 0, 0), line.section('|', 1)); });
    expectState(QIpAddressWithNetmaskValidator(nullptr), Intermediate, {"192.168.1.", "0.0.0.1", "127.0.0.1"});
    expectState(QIpAddressWithNetmaskValidator(nullptr), Invalid, {"1.2.3.256"});

    auto mask = std::make_unique<QLineEdit>("255.255.255.0");
    const QIpAddressWithNetmaskValidator survivor(mask.get());
    mask.reset();
    expectState(survivor, Acceptable, {"192.168.1.255"});
}

TEST(Validators, JudgeMacAddresses) {
    QMacAddressValidator validator;
    expectState(validator, Acceptable, {"", "02-5A-E3-1A-2B-3C", "02:5a e3:1a-2b:3c", "025AE31A2B3C"});
    expectState(validator, Intermediate, {"02-5A-E3-", "025AE31A2B3"});
    expectState(validator, Invalid, {"025AE31A2B3C4", "02.5A"});
    QString text = "02:5A:EG";
    int pos = 0;
    EXPECT_EQ(validator.validate(text, pos), Invalid);
    EXPECT_EQ(pos, 7);

    validator.setAllowedSeperators(".");
    expectState(validator, Acceptable, {"025A.E31A.2B3C"});
    expectState(validator, Invalid, {"02-5A"});
}

TEST(AddressText, CleansAddresses) {
    expectRewrites({" -> 0.0.0.0", " \t -> 0.0.0.0", " 192.168.001.010  -> 192.168.1.10", "001.2.3.4 -> 01.2.3.4",
                    "10.100.200.000 -> 10.100.200.0"},
                   [](QString text) {
                       fixupIpAddress(text);
                       return text;
                   });
    QString mac = QString::fromUtf8(" 02-5A-E3:1a-2b-3cGé\u0663");
    fixupMacAddress(mac);
    EXPECT_EQ(mac, "025AE31a2b3c");
}

TEST(AddressText, SuggestsTheMaskOfTheClass) {
    expectRewrites({"0.0.1.0 -> 255.0.0.0", "127.255.255.255 -> 255.0.0.0", "128.0.0.0 -> 255.255.0.0",
                    "191.255.255.255 -> 255.255.0.0", "192.168.000.001 -> 255.255.255.0",
                    "223.255.255.255 -> 255.255.255.0", "224.0.0.0 -> ", "10.1 -> ", "::1 -> "},
                   [](const QString &text) { return IpAddressWidget::subnetFromAddress(text).toString(); });
}
