#pragma once

#include "NodeMapImpl.h"
#include "Text.h"

#include <map>

namespace GenApi {

/// Where the value of an Integer, Float, Boolean, Enumeration or Command lives: in a variable of its own (Value), in
/// another node (pValue), or in one of several of these, chosen by an index (pIndex, ValueIndexed, ValueDefault, ...).
/// \p Number is int64_t or double. Used with the map's lock held.
template <class Number> class TValueSource {
public:
    explicit TValueSource(CNodeImpl &node) : m_node(node) {}

    EAccessMode AccessMode() const {
        if (const SProperty *const index = m_node.Find(EProperty::pIndex))
            if (const EAccessMode mode = m_node.SourceAccessMode(*index); mode != RW)
                return mode;
        const SProperty *const place = Place();
        if (place == nullptr)
            return NI;
        return IsReference(*place) ? m_node.Target(*place).AccessMode() : RW;
    }

    Number Read(bool ignoreCache) const {
        const SProperty &place = CheckedPlace();
        if (IsReference(place))
            return ReadNode(m_node.Target(place), ignoreCache);
        const auto written = m_variables.find(&place);
        return written != m_variables.end() ? written->second : ReadLiteral(place);
    }

    /// Where there are copies the write is rehearsed first, so that a copy that cannot be written leaves nothing half
    /// written.
    void Write(Number value, SWriting how) {
        if (m_node.Has(EProperty::pValueCopy) && !how.isRehearsal)
            WriteAll(value, {how.verify, true});
        WriteAll(value, how);
    }

    /// The other node that holds the value, or null.
    CNodeImpl *Target() const {
        const SProperty *const place = Place();
        return place != nullptr && IsReference(*place) ? &m_node.Target(*place) : nullptr;
    }

    ECachingMode CachingMode() const {
        const CNodeImpl *const target = Target();
        return target != nullptr ? target->CachingMode() : WriteThrough;
    }

    bool IsCached() const {
        const CNodeImpl *const index = m_node.TargetOf(EProperty::pIndex);
        if (index != nullptr && !index->IsCached())
            return false;
        const CNodeImpl *const target = Target();
        return target == nullptr || target->IsCached();
    }

private:
    void WriteAll(Number value, SWriting how) {
        const SProperty &place = CheckedPlace();
        if (IsReference(place))
            WriteNode(m_node.Target(place), value, how);
        else if (!how.isRehearsal)
            Keep(place, value);
        for (const SProperty &property : m_node)
            if (property.id == EProperty::pValueCopy)
                WriteCopy(m_node.Target(property), value, how);
    }

    void Keep(const SProperty &place, Number value) {
        m_variables[&place] = value;
        m_node.Map().Changed(m_node);
    }

    static void WriteCopy(CNodeImpl &copy, Number value, SWriting how) {
        if (how.isRehearsal)
            copy.CheckWritable();
        WriteNode(copy, value, how);
    }

    static bool IsReference(const SProperty &place) { return RelationOf(place.id) != ERelation::None; }

    /// Null when there is none, or none is known because the index cannot be read.
    const SProperty *Place() const {
        if (const SProperty *const index = m_node.Find(EProperty::pIndex))
            return m_node.SourceAccessMode(*index) == RW ? IndexedPlace(m_node.IntegerOf(*index)) : nullptr;
        const SProperty *const reference = m_node.Find(EProperty::pValue);
        return reference != nullptr ? reference : m_node.Find(EProperty::Value);
    }

    const SProperty *IndexedPlace(int64_t index) const {
        for (const SProperty &property : m_node)
            if ((property.id == EProperty::ValueIndexed || property.id == EProperty::pValueIndexed) &&
                ParseInteger(property.Attribute()) == index)
                return &property;
        const SProperty *const reference = m_node.Find(EProperty::pValueDefault);
        return reference != nullptr ? reference : m_node.Find(EProperty::ValueDefault);
    }

    const SProperty &CheckedPlace() const {
        const SProperty *const place = Place();
        if (place == nullptr)
            throw RUNTIME_EXCEPTION("Node '%s' has no value", m_node.NameText());
        return *place;
    }

    Number ReadLiteral(const SProperty &place) const {
        if constexpr (std::is_same_v<Number, double>)
            return m_node.FloatOf(place);
        else
            return m_node.IntegerOf(place);
    }
    static Number ReadNode(const CNodeImpl &node, bool ignoreCache) {
        if constexpr (std::is_same_v<Number, double>)
            return node.ReadFloat(ignoreCache);
        else
            return node.ReadInteger(ignoreCache);
    }
    static void WriteNode(CNodeImpl &node, Number value, SWriting how) {
        if constexpr (std::is_same_v<Number, double>)
            node.WriteFloat(value, how);
        else
            node.WriteInteger(value, how);
    }

    CNodeImpl &m_node;
    /// Variables that were written, by the property they stand for.
    std::map<const SProperty *, Number> m_variables;
};

} // namespace GenApi
