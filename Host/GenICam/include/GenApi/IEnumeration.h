#pragma once

#include "GenApi/IEnumEntry.h"

namespace GenApi {

class IEnumeration : virtual public IValue {
public:
    /// Symbolic names of the entries that are available now.
    virtual void GetSymbolics(StringList_t &Symbolics) = 0;
    /// All entries.
    virtual void GetEntries(NodeList_t &Entries) = 0;
    /// Sets by symbolic name.
    IEnumeration &operator=(const gcstring &ValueStr) {
        FromString(ValueStr);
        return *this;
    }
    /// \param Verify refuse a value whose entry is not available.
    /// \throws AccessException when the node is not writable or the entry not available; InvalidArgumentException when
    /// no entry has the value.
    virtual void SetIntValue(int64_t Value, bool Verify = true) = 0;
    /// \throws AccessException when the node is not readable.
    virtual int64_t GetIntValue(bool Verify = false, bool IgnoreCache = false) = 0;
    gcstring operator*() { return ToString(); }
    /// The entry with this symbolic name, or null.
    virtual IEnumEntry *GetEntryByName(const gcstring &Symbolic) = 0;
    /// The entry with this value, or null.
    virtual IEnumEntry *GetEntry(int64_t IntValue) = 0;
    /// The entry of the present value, or null when none has it.
    virtual IEnumEntry *GetCurrentEntry(bool Verify = false, bool IgnoreCache = false) = 0;
};

} // namespace GenApi
