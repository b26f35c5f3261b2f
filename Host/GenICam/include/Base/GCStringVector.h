#pragma once

#include "Base/GCString.h"

#include <algorithm>
#include <vector>

namespace GenICam {

/// A list of GenICam strings: a std::vector with the standard's additions (positions as plain indexes, contains).
/// at() throws std::out_of_range; operator[] is unchecked.
class gcstring_vector : private std::vector<gcstring> {
    using Storage = std::vector<gcstring>;

public:
    using Storage::const_iterator;
    using Storage::const_reference;
    using Storage::difference_type;
    using Storage::iterator;
    using Storage::reference;
    using Storage::size_type;
    using Storage::value_type;

    using Storage::Storage;
    gcstring_vector() = default;

    using Storage::assign;
    using Storage::at;
    using Storage::back;
    using Storage::begin;
    using Storage::capacity;
    using Storage::clear;
    using Storage::empty;
    using Storage::end;
    using Storage::erase;
    using Storage::front;
    using Storage::insert;
    using Storage::max_size;
    using Storage::operator[];
    using Storage::pop_back;
    using Storage::push_back;
    using Storage::reserve;
    using Storage::resize;
    using Storage::size;

    /// \p index must be below size().
    void erase(std::size_t index) { erase(begin() + static_cast<difference_type>(index)); }
    /// Inserts before \p index, which is at most size().
    void insert(std::size_t index, const gcstring &value) {
        insert(begin() + static_cast<difference_type>(index), value);
    }
    bool contains(const gcstring &value) const { return std::find(begin(), end(), value) != end(); }
};

} // namespace GenICam
