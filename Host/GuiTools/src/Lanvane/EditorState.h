#pragma once

#include "MinimalCorvoGigETL/QuorelGigEDeviceInfo.h"
#include "commissioning/Change.h"

#include <QList>
#include <QNetworkAddressEntry>
#include <QString>

#include <array>
#include <optional>

/// What is known of how a device's addresses came about, beyond what its info says.
struct DeviceSurroundings {
    QString adapterName;                     ///< of the adapter it is listed under; empty when under none
    QNetworkAddressEntry adapterEntry;       ///< the first IPv4 entry of that adapter
    QList<QNetworkAddressEntry> hostEntries; ///< of all the host's adapters
    bool isForced = false;                   ///< its current address was forced in this run
};

/// Address, mask and gateway as texts.
struct AddressTexts {
    QString ipAddress, netmask, defaultGateway;
};

/// What a device has stored as its static addresses: its persistent values where the info holds them, else the current
/// ones of a static device. None for a device in another mode and for one whose address was forced.
std::optional<AddressTexts> storedAddresses(const Corvo::CQuorelGigEDeviceInfo &device, bool isForced);

/// Whether a static device has another address than it has stored, so that it will lose it.
bool isAtTemporaryAddress(const Corvo::CQuorelGigEDeviceInfo &device, bool isForced);

/// The content of the editor: the device it belongs to, what that one has stored, what the user has typed, whether that
/// is valid and whether it differs. It knows no widgets.
///
/// While the mode is static the addresses are those typed, else those stored, else a suggestion; in the other modes
/// they are the device's current ones. What was typed is kept meanwhile.
class EditorState {
public:
    using OptionalMode = std::optional<commissioning::Mode>;
    using Device = Corvo::CQuorelGigEDeviceInfo;
    enum Field { IpAddress, Netmask, DefaultGateway, FieldCount };

    void clear() { *this = {}; }
    /// Forgets what the user has done.
    void load(const Device &device, const DeviceSurroundings &surroundings);
    /// The device has changed. What the user has done stays.
    void follow(const Device &device, const DeviceSurroundings &surroundings);

    // By the user.
    void chooseMode(OptionalMode mode);
    void type(Field field, const QString &text);
    /// Enters the device's current addresses as static ones.
    void takeCurrentAddresses();
    /// What the user has done is done with.
    void clearEditFlags();

    const std::optional<Device> &device() const { return m_Device; }
    /// Empty without a device.
    QString mac() const;
    QString text(Field field) const;
    OptionalMode chosenMode() const { return m_Mode; }
    /// The chosen one, unless the device does not support it.
    OptionalMode mode() const;
    bool isSupported(commissioning::Mode mode) const;

    bool isValid() const { return problem().isEmpty(); }
    /// Why it is not valid, for the user; empty when it is.
    QString problem() const;
    /// What the user should know now: the problem of what was changed, or that nothing can be chosen.
    QString hint() const;
    bool hasChanges() const;
    /// Whether the user would lose something. Typing in the address field alone does not count, only a text that
    /// differs does.
    bool isSavePending() const;
    bool isEditModeActive() const { return m_isEditModeActive; }

    /// All of it, of this moment. There must be a device.
    commissioning::Change change() const;

private:
    using Texts = std::array<QString, FieldCount>;

    void take(const Device &device, const DeviceSurroundings &surroundings);
    OptionalMode supported(OptionalMode mode) const;
    QString canonical(Field field) const;
    bool isDirty(Field field) const;
    void updateFlags();

    std::optional<Device> m_Device;
    DeviceSurroundings m_Surroundings;
    OptionalMode m_StoredMode;
    OptionalMode m_Mode;
    std::optional<Texts> m_Stored; ///< canonical
    Texts m_Static;                ///< of the static mode until something is typed
    Texts m_Current;               ///< canonical
    std::array<std::optional<QString>, FieldCount> m_Typed;

    bool m_isIpProtocolConfigDirty = false;
    bool m_isIpAddressDirty = false;
    bool m_isIpAddressEdited = false;
    bool m_isNetmaskDirty = false;
    bool m_isNetmaskEdited = false;
    bool m_isDefaultGatewayDirty = false;
    bool m_isDefaultGatewayEdited = false;
    bool m_isEditModeActive = false;
    bool m_isCustomNameDirty = false;
};
