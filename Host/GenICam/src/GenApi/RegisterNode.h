#pragma once

#include "NodeImpl.h"
#include "RegisterCache.h"

#include "GenApi/IRegister.h"

namespace GenApi {

class CPortNode;

/// What all registers share: address, length, port, cache. By itself the Register node type.
class CRegisterNode : public CNodeImpl, public IRegister {
public:
    using CNodeImpl::CNodeImpl;

    EInterfaceType GetPrincipalInterfaceType() const override { return intfIRegister; }
    INode *GetNode() override { return this; }
    bool IsValueCacheValid() const override;
    gcstring ToString(bool Verify, bool IgnoreCache) override;
    void FromString(const gcstring &ValueStr, bool Verify) override;
    void Set(const uint8_t *pBuffer, int64_t Length, bool Verify) override;
    void Get(uint8_t *pBuffer, int64_t Length, bool Verify, bool IgnoreCache) override;
    int64_t GetLength() override;
    int64_t GetAddress() override;

    void DropCache() override;

protected:
    EAccessMode OwnAccessMode() const override;
    ECachingMode DoCachingMode() const override;
    bool DoIsCached() const override;

    /// In bytes. \throws RuntimeException when it is not between 1 and 16 MiB.
    std::size_t Length() const;
    CRegisterCache::Bytes ReadBytes(bool ignoreCache) const;
    void WriteBytes(CRegisterCache::Bytes bytes, SWriting how = {});
    /// The register as a number of 1 to 8 bytes, its most significant byte first or last as the file says.
    uint64_t ReadRaw(std::size_t length, bool ignoreCache) const;
    void WriteRaw(uint64_t value, std::size_t length, SWriting how);
    bool IsBigEndian() const;
    /// True when the register itself and its port can be read.
    bool IsRawReadable() const;

private:
    CPortNode &Port() const;
    int64_t Address() const;
    int64_t SumAddress() const;
    int64_t IndexOffset(const SProperty &index) const;
    std::size_t CheckedLength() const;
};

} // namespace GenApi
