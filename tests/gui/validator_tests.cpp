#include "Lanvane/QIpAddressWithNetmaskValidator.h"
#include "Lanvane/QIpNetmaskValidator.h"
#include "Lanvane/QMacAddressValidator.h"
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

using Validator = QIpAddressWithNetmaskValidator;
using Flag = void (Validator::*)(bool);

constexpr Flag Null = &Validator::setAllowNullAddress;
constexpr Flag Loopback = &Validator::setAllowLoopbackAddress;
constexpr Flag Broadcast = &Validator::setAllowBroadcastAddress;
constexpr Flag Multicast = &Validator::setAllowMulticastAddress;
constexpr Flag Experimental = &Validator::setAllowExperimentalPurposeAddress;

/// The flag alone makes the addresses acceptable, and all others together do not.
void expectAllowedBy(Flag flag, const char *mask, Texts addresses) {
    const QLineEdit maskEdit(mask);
    Validator validator(&maskEdit);
    for (const bool allow : {true, false}) {
        for (const Flag each : {Null, Loopback, Broadcast, Multicast, Experimental})
            (validator.*each)((each == flag) == allow);
        expectState(validator, allow ? Acceptable : Intermediate, addresses);
    }
}

/// No flag matters for these.
void expectAlways(QValidator::State state, const char *mask, Texts addresses) {
    const QLineEdit maskEdit(mask);
    Validator validator(&maskEdit);
    expectState(validator, state, addresses);
    for (const Flag flag : {Null, Loopback, Broadcast, Multicast, Experimental})
        (validator.*flag)(true);
    expectState(validator, state, addresses);
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
    expectAllowedBy(Broadcast, "255.255.255.0", {"192.168.1.255"});
    expectAllowedBy(Broadcast, "/23", {"192.168.1.255", "10.0.1.255"});
    expectAllowedBy(Null, "", {"0.0.0.0", ""});
    expectAllowedBy(Loopback, "", {"127.0.0.1", "127.255.255.255"});
    expectAllowedBy(Multicast, "255.0.0.0", {"224.0.0.0", "239.255.255.255"});
    expectAllowedBy(Experimental, "255.255.255.0", {"240.0.0.0", "255.255.255.255"});
    expectAlways(Acceptable, "255.255.0.0", {"192.168.1.255", "192.168.1.0", "128.0.0.1"});
    expectAlways(Acceptable, "255.255.255.255", {"192.168.1.0", "223.255.255.255"}); // no usable mask, nothing to judge
    expectAlways(Intermediate, "255.255.255.0", {"192.168.1.0", "192.168.1.", "0.0.0.1"});
    expectAlways(Invalid, "", {"1.2.3.256"});

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
