#pragma once

#include "Text.h"

#include "GenApi/Types.h"

#include <bitset>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace GenApi {

/// Node types the engine knows. A StructReg becomes one MaskedIntReg per StructEntry. Unavailable stands for those of
/// IEEE 1394 cameras, whose configuration ROM nobody reads here.
enum class ENodeType : uint8_t {
    Category,
    Port,
    Integer,
    IntReg,
    MaskedIntReg,
    IntSwissKnife,
    IntConverter,
    Float,
    FloatReg,
    SwissKnife,
    Converter,
    Boolean,
    Command,
    Enumeration,
    EnumEntry,
    String,
    StringReg,
    Register,
    Unavailable,
    Node
};

/// What a property says about the relation between its node and the node it names.
enum class ERelation : uint8_t {
    None,       ///< The text is no reference.
    Read,       ///< The node reads from the other.
    Locate,     ///< It reads from the other which register it is; what it knows of each register stays true.
    ReadWrite,  ///< It also passes writes on.
    Write,      ///< It only passes writes on.
    Port,       ///< Register and port.
    Invalidate, ///< The node's cache is stale once the other changed.
    Select,     ///< The other node's value depends on this one's.
    Link        ///< No influence on any value.
};

/// Elements of a node with the relation they express, spelled as in the file.
#define GENAPI_PROPERTIES(X)                                                                                           \
    X(AccessMode, None)                                                                                                \
    X(Address, None)                                                                                                   \
    X(Bit, None)                                                                                                       \
    X(Cachable, None)                                                                                                  \
    X(CommandValue, None)                                                                                              \
    X(Constant, None)                                                                                                  \
    X(Description, None)                                                                                               \
    X(DisplayName, None)                                                                                               \
    X(DisplayNotation, None)                                                                                           \
    X(DisplayPrecision, None)                                                                                          \
    X(DocuURL, None)                                                                                                   \
    X(Endianess, None)                                                                                                 \
    X(EventID, None)                                                                                                   \
    X(Expression, None)                                                                                                \
    X(Formula, None)                                                                                                   \
    X(FormulaFrom, None)                                                                                               \
    X(FormulaTo, None)                                                                                                 \
    X(ImposedAccessMode, None)                                                                                         \
    X(Inc, None)                                                                                                       \
    X(IsDeprecated, None)                                                                                              \
    X(IsSelfClearing, None)                                                                                            \
    X(LSB, None)                                                                                                       \
    X(Length, None)                                                                                                    \
    X(MSB, None)                                                                                                       \
    X(Max, None)                                                                                                       \
    X(Min, None)                                                                                                       \
    X(NumericValue, None)                                                                                              \
    X(OffValue, None)                                                                                                  \
    X(OnValue, None)                                                                                                   \
    X(PollingTime, None)                                                                                               \
    X(Representation, None)                                                                                            \
    X(Sign, None)                                                                                                      \
    X(Slope, None)                                                                                                     \
    X(Streamable, None)                                                                                                \
    X(SwapEndianess, None)                                                                                             \
    X(Symbolic, None)                                                                                                  \
    X(ToolTip, None)                                                                                                   \
    X(Unit, None)                                                                                                      \
    X(ValidValueSet, None)                                                                                             \
    X(Value, None)                                                                                                     \
    X(ValueDefault, None)                                                                                              \
    X(ValueIndexed, None)                                                                                              \
    X(Visibility, None)                                                                                                \
    X(pAddress, Locate)                                                                                                \
    X(pAlias, Link)                                                                                                    \
    X(pBlockPolling, Link)                                                                                             \
    X(pCastAlias, Link)                                                                                                \
    X(pCommandValue, Read)                                                                                             \
    X(pEnumEntry, Read)                                                                                                \
    X(pError, Link)                                                                                                    \
    X(pFeature, Link)                                                                                                  \
    X(pInc, Read)                                                                                                      \
    X(pIndex, Locate)                                                                                                  \
    X(pInvalidator, Invalidate)                                                                                        \
    X(pIsAvailable, Read)                                                                                              \
    X(pIsImplemented, Read)                                                                                            \
    X(pIsLocked, Read)                                                                                                 \
    X(pLength, Locate)                                                                                                 \
    X(pMax, Read)                                                                                                      \
    X(pMin, Read)                                                                                                      \
    X(pOffset, Locate)                                                                                                 \
    X(pPort, Port)                                                                                                     \
    X(pSelected, Select)                                                                                               \
    X(pValue, ReadWrite)                                                                                               \
    X(pValueCopy, Write)                                                                                               \
    X(pValueDefault, ReadWrite)                                                                                        \
    X(pValueIndexed, ReadWrite)                                                                                        \
    X(pVariable, Read)

enum class EProperty : uint8_t {
#define GENAPI_ENUMERATOR(name, relation) name,
    GENAPI_PROPERTIES(GENAPI_ENUMERATOR)
#undef GENAPI_ENUMERATOR
        Count
};

ERelation RelationOf(EProperty property);
std::string_view NameOf(EProperty property);
/// \returns EProperty::Count for an unknown element.
EProperty PropertyNamed(std::string_view element);

/// Index of a node that does not exist.
constexpr int32_t NoNode = -1;

/// One element of a node. Most are never asked for, so their texts are left as they stand in the document, and there is
/// no more of them here than it takes to find them.
struct SProperty {
    EProperty id = EProperty::Count;
    /// The node a reference names, once linked.
    int32_t target = NoNode;
    const char *text = "";
    const char *attribute = "";

    std::string_view Text() const { return Trim(text); }
    /// Name of a pVariable, Constant or Expression; Index of an indexed value; Offset of a pIndex. A pIndex with a
    /// pOffset attribute is followed by a property pOffset.
    std::string_view Attribute() const { return Trim(attribute); }
};

struct SNodeDescription {
    ENodeType type;
    ENameSpace nameSpace;
    std::string_view name;
    /// Range in SDescription::properties.
    uint32_t firstProperty;
    uint32_t propertyCount;
    /// Which properties the node has, for a quick "no".
    std::bitset<static_cast<std::size_t>(EProperty::Count)> has;
    /// Something the node cannot work without does not exist.
    bool isBroken = false;
};

/// Attributes of the root element.
struct SRootAttributes {
    std::string_view modelName, vendorName, toolTip, standardNameSpace, productGuid, versionGuid;
    uint16_t schemaVersion[3];
    uint16_t deviceVersion[3];
};

/// A camera description as plain lists, without any behaviour.
struct SDescription {
    /// Keeps the text alive that names and properties lie in.
    std::shared_ptr<const void> text;
    /// Texts that do not stand in the file in one piece. A deque never moves its elements.
    std::deque<std::string> madeTexts;
    SRootAttributes root{};
    std::vector<SNodeDescription> nodes;
    std::vector<SProperty> properties;
};

} // namespace GenApi
