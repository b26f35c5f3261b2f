#pragma once

#include "MinimalCorvo/DeviceInfo.h"

#include <cstddef>
#include <type_traits>
#include <vector>

namespace Corvo {

/// Memory of the list objects, always taken from and given back to this library, whichever module uses the list.
void *AllocateList(std::size_t size);
void ReleaseList(void *memory) noexcept;

/// A growable array of values with the usual sequence interface. Iterators are plain pointers into the array; growing
/// or erasing invalidates them. at() throws std::out_of_range; every other position is unchecked. Not thread safe.
template <class T> class TList {
public:
    using value_type = T;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    using reference = T &;
    using const_reference = const T &;
    using iterator = T *;
    using const_iterator = const T *;

    TList() = default;
    explicit TList(size_type count) : m_items(count) {}

    static void *operator new(std::size_t size) { return AllocateList(size); }
    static void operator delete(void *memory) noexcept { ReleaseList(memory); }
    // A class with its own operator new hides the global placement form.
    static void *operator new(std::size_t, void *place) noexcept { return place; }
    static void operator delete(void *, void *) noexcept {}

    void assign(size_type count, const T &value) { m_items.assign(count, value); }

    reference at(size_type index) { return m_items.at(index); }
    const_reference at(size_type index) const { return m_items.at(index); }
    reference operator[](size_type index) { return m_items[index]; }
    const_reference operator[](size_type index) const { return m_items[index]; }
    reference front() { return m_items.front(); }
    const_reference front() const { return m_items.front(); }
    reference back() { return m_items.back(); }
    const_reference back() const { return m_items.back(); }

    iterator begin() { return m_items.data(); }
    const_iterator begin() const { return m_items.data(); }
    iterator end() { return m_items.data() + m_items.size(); }
    const_iterator end() const { return m_items.data() + m_items.size(); }

    size_type size() const { return m_items.size(); }
    size_type capacity() const { return m_items.capacity(); }
    size_type max_size() const { return m_items.max_size(); }
    bool empty() const { return m_items.empty(); }
    void reserve(size_type count) { m_items.reserve(count); }
    void resize(size_type count) { m_items.resize(count); }
    void clear() { m_items.clear(); }

    void push_back(const T &value) { m_items.push_back(value); }
    void pop_back() { m_items.pop_back(); }

    /// Inserts before \p position. \returns the new element's position.
    iterator insert(const_iterator position, const T &value) {
        return ToIterator(m_items.insert(m_items.begin() + (position - begin()), value));
    }
    /// \returns the position after the erased element.
    iterator erase(const_iterator position) {
        return ToIterator(m_items.erase(m_items.begin() + (position - begin())));
    }

    // The index forms are templates so that a literal 0 means the first element and no null iterator.
    template <class Index, std::enable_if_t<std::is_integral_v<Index>, int> = 0>
    void insert(Index index, const T &value) {
        insert(begin() + index, value);
    }
    template <class Index, std::enable_if_t<std::is_integral_v<Index>, int> = 0> void erase(Index index) {
        erase(begin() + index);
    }

private:
    iterator ToIterator(typename std::vector<T>::iterator position) { return begin() + (position - m_items.begin()); }

    std::vector<T> m_items;
};

using DeviceInfoList = TList<CDeviceInfo>;
using TlInfoList = TList<CTlInfo>;
using InterfaceInfoList = TList<CInterfaceInfo>;

} // namespace Corvo
