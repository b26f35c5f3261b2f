#include "PlanRollback.h"

#include "PlanWriter.h"
#include "SideBySide.h"
#include "commissioning/AddressText.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/Search.h"

namespace commissioning {

using namespace Corvo;

namespace {

bool contains(const PlanMembers &members, const PlanMember *member) {
    return std::find(members.begin(), members.end(), member) != members.end();
}

std::vector<PlanTask *> backsOf(const PlanMembers &members) {
    std::vector<PlanTask *> tasks;
    for (PlanMember *const member : members)
        tasks.push_back(&member->back);
    return tasks;
}

} // namespace

void PlanRollback::run(const PlanMembers &group) {
    look(those(group, isLost));
    PlanMembers going = goingBack(group);
    for (PlanMember *const member : going)
        prepare(*member);
    const PlanMembers taken = those(going, [&](const PlanMember *member) {
        return isTaken(member->back.expectedAddress(), member->before.mac, going);
    });
    const PlanMembers moved = giveAnother(taken);
    writeBack(those(going, [&](const PlanMember *each) { return !contains(taken, each) || contains(moved, each); }));

    const PlanMembers held = blocked(group, going);
    const auto isStuck = [&](const PlanMember *each) { return !each->back.isWritten || contains(held, each); };
    for (PlanMember *const member : those(going, isStuck)) {
        if (!isLost(member))
            stay(*member);
    }
    const PlanMembers barred = those(held, isLost);
    writeBack(giveAnother(barred));
    for (PlanMember *const member : those(barred, [](const PlanMember *each) { return !each->back.isWritten; })) {
        member->isStranded = true; // with its old settings it must not start
        stay(*member);
    }
    finish(those(going, [](const PlanMember *each) { return isLost(each) || each->back.isWritten; }));
}

void PlanRollback::finish(const PlanMembers &going) {
    const PlanMembers restarting = those(going, [](const PlanMember *each) { return !each->isStranded; });
    const std::vector<PlanTask *> tasks = backsOf(restarting);
    m_Verifier.restart(tasks);
    m_Verifier.await(tasks);
    returnLoans();
    for (PlanMember *const member : going) {
        const bool hasCome = member->isStranded && !isLost(member); // to what it was sent, when its loan ended
        if (!hasCome)
            tell(*member);
    }
}

/// Those that answer may be fine by now.
void PlanRollback::look(const PlanMembers &lost) {
    try {
        m_Heard = search(m_Layer);
    } catch (const std::exception &) { // of this host; each is asked for all the same
    }
    listen(lost);
    sideBySide(lost.size(), m_AtOnce, [&](std::size_t i) {
        PlanTask &task = lost[i]->forward;
        const CDeviceInfo *const found = findByMac(m_Heard, task.mac());
        task.result.now.reset();
        if (!found)
            return;
        task.result.now = *found;
        m_Verifier.settle(task);
    });
}

void PlanRollback::listen(const PlanMembers &lost) {
    std::vector<DeviceInfoList> answers(lost.size());
    sideBySide(lost.size(), m_AtOnce, [&](std::size_t i) {
        std::set<Address> places = lost[i]->place.has;
        places.insert(lost[i]->forward.expectedAddress());
        places.erase(0);
        for (const Address place : places) {
            if (findByMac(m_Heard, lost[i]->before.mac) || findByMac(answers[i], lost[i]->before.mac))
                return;
            ask(place, answers[i]);
        }
    });
    for (DeviceInfoList &list : answers) {
        for (CDeviceInfo &device : list) {
            if (findByMac(m_Heard, propertyOf(device, PropertyMac).c_str()) != nullptr)
                continue;
            probe(m_Layer, device);
            m_Heard.push_back(device);
        }
    }
}

bool PlanRollback::isTaken(Address address, const std::string &mac, const PlanMembers &going) const {
    return std::any_of(m_Heard.begin(), m_Heard.end(), [&](const CDeviceInfo &device) {
        const Camera camera = cameraOf(device);
        const auto isOwn = [&](const PlanMember *member) { return member->before.mac == camera.mac; };
        const bool leaves = camera.mac == mac || std::any_of(going.begin(), going.end(), isOwn);
        return !leaves && addressesOf(camera).count(address) != 0;
    });
}

/// It would have its new address at its next start, which nobody else has; its old one has been given away.
bool PlanRollback::isLeft(const PlanMember &member, const PlanMembers &group) const {
    return !member.forward.result.now && std::any_of(group.begin(), group.end(), [&](const PlanMember *each) {
        return !isLost(each) && member.place.has.count(each->place.gets) != 0;
    });
}

PlanMembers PlanRollback::goingBack(const PlanMembers &group) {
    std::vector<Place> places;
    std::vector<bool> goes;
    for (PlanMember *const member : group) {
        const bool isLeftThere = isLost(member) && isLeft(*member, group);
        if (isLeftThere)
            member->lasting = "Another camera has got its old address, so its old settings were not sent: it will "
                              "have the new ones when it starts.";
        places.push_back(member->place);
        goes.push_back(isLost(member) && !isLeftThere);
    }
    const std::vector<bool> all = entangled(places, goes);
    PlanMembers going;
    for (std::size_t i = 0; i < group.size(); ++i) {
        if (all[i])
            going.push_back(group[i]);
    }
    return going;
}

void PlanRollback::prepare(PlanMember &member) {
    PlanTask &back = member.back;
    const auto &now = member.forward.result.now;
    const CDeviceInfo *const heard = findByMac(m_Heard, member.before.mac);
    if (heard)
        back.change.device = *heard;
    else if (now)
        back.change.device = *now;
    back.isHeard = heard != nullptr;
    const Camera camera = cameraOf(back.change.device);
    back.isReadable = back.isHeard && camera.status == Status::Ok && !isTaken(camera.address, camera.mac, {});
}

PlanMembers PlanRollback::giveAnother(const PlanMembers &members) {
    const auto found = m_Loans.take(backsOf(members));
    PlanMembers moved;
    for (std::size_t i = 0; i < members.size(); ++i) {
        PlanTask &back = members[i]->back;
        back.isWritten = false;
        members[i]->isStranded = !found[i];
        if (!found[i]) {
            back.result.text = "another camera has its old address, and no other is free.";
            back.result.now = members[i]->forward.result.now;
            continue;
        }
        back.change = changeOf(back.change.device, back.change.adapter, wordOf(Mode::Static),
                               StoredAddresses{found[i]->address, found[i]->mask, 0});
        members[i]->isElsewhere = true;
        moved.push_back(members[i]);
    }
    return moved;
}

void PlanRollback::writeBack(PlanMember &member) {
    PlanTask &back = member.back;
    back.isWritten = isStored(back).value_or(false);
    if (back.isWritten)
        return;
    write(m_Layer, &back);
    if (back.isWritten || !back.change.isStaticFirst)
        return;
    // Better the mode alone than nothing.
    back.change.isStaticFirst = false;
    back.change.addressDiffers = back.change.maskDiffers = back.change.gatewayDiffers = false;
    member.lasting = "It has another static address stored than before, which it does not use.";
    write(m_Layer, &back);
}

void PlanRollback::writeBack(const PlanMembers &members) {
    sideBySide(members.size(), m_AtOnce, [&](std::size_t i) { writeBack(*members[i]); });
    const PlanMembers unheard = those(members, [&](const PlanMember *member) {
        return !member->back.isWritten && !member->back.isReadable && member->back.isHeard &&
               m_Loans.canLend(member->back.change.adapter);
    });
    writeOverLoans(m_Layer, m_Loans, backsOf(unheard), m_AtOnce);
}

PlanMembers PlanRollback::blocked(const PlanMembers &group, const PlanMembers &going) {
    std::vector<Place> places;
    std::vector<bool> stays;
    for (const PlanMember *const member : group) {
        const bool leaves = contains(going, member) && member->back.isWritten;
        Place place;
        if (leaves)
            place.gets = member->back.expectedAddress();
        const CDeviceInfo *const heard = findByMac(m_Heard, member->before.mac);
        place.has = heard ? addressesOf(cameraOf(*heard)) : std::set<Address>();
        if (const Address sent = member->forward.expectedAddress(); sent != 0)
            place.has.insert(sent);
        place.has.erase(place.gets);
        places.push_back(place);
        stays.push_back(!leaves);
    }
    const std::vector<bool> all = entangled(places, stays);
    PlanMembers held;
    for (std::size_t i = 0; i < group.size(); ++i) {
        if (all[i] && !stays[i])
            held.push_back(group[i]);
    }
    return held;
}

/// One that was fine keeps what it has, as its way back is barred.
void PlanRollback::stay(PlanMember &member) {
    PlanTask again = member.forward;
    again.change.device = member.back.change.device;
    again.isReadable = member.back.isReadable;
    again.temporary = member.back.temporary;
    again = whereLent(again);
    again.temporary.reset();
    again.isWritten = isStored(again).value_or(false);
    if (!again.isWritten) {
        write(m_Layer, &again);
        again.isWritten = again.isWritten && isStored(again).value_or(false); // nobody looks at it again
    }
    member.back.isWritten = false;
    if (again.isWritten && member.back.temporary)
        m_Lent.push_back(&member);
    if (again.isWritten)
        return;
    append(&member.lasting, lentText(member.back));
    if (isLost(&member))
        return;
    member.forward.result.success = false;
    member.forward.result.text = "It was to go back together with another camera, whose old address it had got, but "
                                 "could not be written: it is not known what it has stored.";
}

/// When the others have left their addresses.
void PlanRollback::returnLoans() {
    std::vector<PlanTask *> tasks;
    for (PlanMember *const member : m_Lent) {
        PlanTask &task = member->forward;
        task.isDone = task.result.success = false;
        task.restarts = 0;
        tasks.push_back(&task);
    }
    m_Verifier.restart(tasks);
    m_Verifier.await(tasks);
    for (PlanMember *const member : those(m_Lent, isLost))
        append(&member->lasting, lentText(member->back));
}

void PlanRollback::tell(PlanMember &member) const {
    Result &result = member.record->result;
    const PlanTask &back = member.back;
    result = back.result;
    if (member.isStranded)
        result.now = member.forward.result.now; // a loan may have ended since
    result.success = false;
    result.text = isLost(&member) ? member.forward.result.text
                                  : "It went back together with another camera, whose old address it had got.";
    if (back.isDone && member.isElsewhere)
        append(&result.text, "Its old address is another camera's by now: it has got the free address " +
                                 toText(back.change.address) + ".");
    else if (back.isDone)
        append(&result.text, back.result.success ? "It has its old settings again."
                                                 : "It has its old settings again, without its old name.");
    else
        append(&result.text, "Its old settings could not be put back: " + back.result.text);
    append(&result.text, member.lasting);
    const PlanState failed = result.now ? PlanState::Failed : PlanState::Unconfirmed;
    endMember(&member, back.isDone && !member.isElsewhere ? PlanState::RolledBack : failed);
}

} // namespace commissioning
