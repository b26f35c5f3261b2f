#include "RegisterNode.h"

#include "EnumText.h"
#include "NodeMapImpl.h"
#include "PortNode.h"
#include "Text.h"

#include <algorithm>
#include <cstring>

namespace GenApi {

namespace {

constexpr int64_t maxRegisterLength = 16 << 20;
constexpr int64_t defaultLength = 4;

} // namespace

bool CRegisterNode::IsValueCacheValid() const {
    const COperation operation(Map());
    return IsCached();
}

gcstring CRegisterNode::ToString(bool, bool IgnoreCache) {
    const COperation operation(Map());
    CheckReadable();
    return FormatBytes(ReadBytes(IgnoreCache));
}

void CRegisterNode::FromString(const gcstring &ValueStr, bool Verify) {
    const auto bytes = ParseBytes(ValueStr.c_str());
    if (!bytes)
        throw INVALID_ARGUMENT_EXCEPTION("Node '%s': '%s' is no sequence of bytes", NameText(), ValueStr.c_str());
    Set(bytes->data(), static_cast<int64_t>(bytes->size()), Verify);
}

void CRegisterNode::Set(const uint8_t *pBuffer, int64_t Length, bool) {
    CUpdate update(Map());
    CheckWritable();
    const auto length = static_cast<int64_t>(CRegisterNode::Length());
    if (Length != length)
        throw OUT_OF_RANGE_EXCEPTION("Node '%s' has %lld bytes, %lld were given", NameText(),
                                     static_cast<long long>(length), static_cast<long long>(Length));
    WriteBytes({pBuffer, pBuffer + Length});
}

void CRegisterNode::Get(uint8_t *pBuffer, int64_t Length, bool, bool IgnoreCache) {
    const COperation operation(Map());
    CheckReadable();
    const CRegisterCache::Bytes bytes = ReadBytes(IgnoreCache);
    if (Length < static_cast<int64_t>(bytes.size()))
        throw OUT_OF_RANGE_EXCEPTION("Node '%s' has %zu bytes, there is room for %lld", NameText(), bytes.size(),
                                     static_cast<long long>(Length));
    std::copy(bytes.begin(), bytes.end(), pBuffer);
}

int64_t CRegisterNode::GetLength() {
    const COperation operation(Map());
    return static_cast<int64_t>(Length());
}

int64_t CRegisterNode::GetAddress() {
    const COperation operation(Map());
    return Address();
}

void CRegisterNode::DropCache() {
    if (auto *const port = dynamic_cast<CPortNode *>(TargetOf(EProperty::pPort)))
        port->Cache().DropOwner(Index());
}

/// Not implemented without a port, and no better than the node that gives the address.
EAccessMode CRegisterNode::OwnAccessMode() const {
    if (!Has(EProperty::pPort))
        return NI;
    EAccessMode mode = Combine(ParseAccessMode(Text(EProperty::AccessMode)), Port().AccessMode());
    for (const SProperty &property : *this)
        if (property.id == EProperty::pAddress)
            mode = Combine(mode, SourceAccessMode(property));
    return mode;
}

bool CRegisterNode::IsRawReadable() const { return IsReadable(OwnAccessMode()); }

ECachingMode CRegisterNode::DoCachingMode() const { return ParseCachingMode(Text(EProperty::Cachable)); }

bool CRegisterNode::DoIsCached() const {
    const auto isUnknown = [this](const SProperty &property) {
        return RelationOf(property.id) == ERelation::Locate && !Target(property).IsCached();
    };
    return std::none_of(begin(), end(), isUnknown) && Port().Cache().Find(Index(), Address(), Length()) != nullptr;
}

CPortNode &CRegisterNode::Port() const {
    const SProperty *const property = Find(EProperty::pPort);
    if (property == nullptr)
        throw RUNTIME_EXCEPTION("Node '%s' has no port", NameText());
    auto *const port = dynamic_cast<CPortNode *>(&Target(*property));
    if (port == nullptr)
        throw RUNTIME_EXCEPTION("Node '%s': '%.*s' is no port", NameText(), static_cast<int>(property->Text().size()),
                                property->Text().data());
    return *port;
}

int64_t CRegisterNode::Address() const {
    const CEvaluationScope scope(*this, EEvaluated::Address);
    return SumAddress();
}

/// Sums wrap around, as the address space does.
int64_t CRegisterNode::SumAddress() const {
    uint64_t sum = 0;
    for (const SProperty &property : *this)
        switch (property.id) {
        case EProperty::Address:
        case EProperty::pAddress:
            sum += static_cast<uint64_t>(IntegerOf(property));
            break;
        case EProperty::pIndex:
            sum += static_cast<uint64_t>(IndexOffset(property));
            break;
        default:
            break;
        }
    return static_cast<int64_t>(sum);
}

int64_t CRegisterNode::IndexOffset(const SProperty &index) const {
    const SProperty *const next = &index + 1;
    uint64_t step = 0;
    if (next != end() && next->id == EProperty::pOffset)
        step = static_cast<uint64_t>(IntegerOf(*next));
    else if (const auto offset = ParseInteger(index.Attribute()))
        step = static_cast<uint64_t>(*offset);
    else
        step = Length();
    return static_cast<int64_t>(static_cast<uint64_t>(IntegerOf(index)) * step);
}

std::size_t CRegisterNode::Length() const {
    const CEvaluationScope scope(*this, EEvaluated::Length);
    return CheckedLength();
}

std::size_t CRegisterNode::CheckedLength() const {
    const int64_t length = IntegerProperty(EProperty::Length, EProperty::pLength).value_or(defaultLength);
    if (length < 1 || length > maxRegisterLength)
        throw RUNTIME_EXCEPTION("Node '%s': a register cannot have %lld bytes", NameText(),
                                static_cast<long long>(length));
    return static_cast<std::size_t>(length);
}

CRegisterCache::Bytes CRegisterNode::ReadBytes(bool ignoreCache) const {
    const std::size_t length = Length();
    const int64_t address = Address();
    CPortNode &port = Port();
    CRegisterCache &cache = DoCachingMode() != NoCache ? port.Cache() : Map().Evaluation().reads;
    if (!ignoreCache)
        if (const CRegisterCache::Bytes *const line = cache.Find(Index(), address, length))
            return *line;
    CRegisterCache::Bytes bytes(length);
    port.ReadBytes(bytes.data(), address, length);
    cache.Store(Index(), address, bytes);
    return bytes;
}

void CRegisterNode::WriteBytes(CRegisterCache::Bytes bytes, SWriting how) {
    const int64_t address = Address();
    CPortNode &port = Port();
    if (how.isRehearsal)
        return;
    try {
        port.WriteBytes(bytes.data(), address, bytes.size());
    } catch (...) {
        Map().Changed(*this); // the device may have taken it all the same
        throw;
    }
    Map().Changed(*this);
    if (DoCachingMode() == WriteThrough)
        port.Cache().Store(Index(), address, std::move(bytes));
}

bool CRegisterNode::IsBigEndian() const {
    const bool isBigEndian = Text(EProperty::Endianess) == "BigEndian";
    return isBigEndian != Port().SwapsEndianess();
}

uint64_t CRegisterNode::ReadRaw(std::size_t length, bool ignoreCache) const {
    CRegisterCache::Bytes bytes = ReadBytes(ignoreCache);
    bytes.resize(length);
    if (!IsBigEndian())
        std::reverse(bytes.begin(), bytes.end());
    uint64_t value = 0;
    for (const uint8_t byte : bytes)
        value = value << 8 | byte;
    return value;
}

void CRegisterNode::WriteRaw(uint64_t value, std::size_t length, SWriting how) {
    CRegisterCache::Bytes bytes(length);
    for (uint8_t &byte : bytes) {
        byte = static_cast<uint8_t>(value);
        value >>= 8;
    }
    if (IsBigEndian())
        std::reverse(bytes.begin(), bytes.end());
    WriteBytes(std::move(bytes), how);
}

} // namespace GenApi
