#pragma once

#include "NodeImpl.h"
#include "RegisterNode.h"
#include "ValueSource.h"

#include "GenApi/IBoolean.h"
#include "GenApi/ICategory.h"
#include "GenApi/ICommand.h"
#include "GenApi/IString.h"

namespace GenApi {

/// A SmartFeature, ConfRom, IntKey and the like: finds its address or value by a key in the configuration ROM of an
/// IEEE 1394 camera. Without one nothing can be found, nor does what refers to it work.
class CUnavailableNode : public CNodeImpl {
public:
    using CNodeImpl::CNodeImpl;

protected:
    EAccessMode OwnAccessMode() const override { return NA; }
};

/// The Category node type.
class CCategoryNode : public CNodeImpl, public ICategory {
public:
    using CNodeImpl::CNodeImpl;

    EInterfaceType GetPrincipalInterfaceType() const override { return intfICategory; }
    INode *GetNode() override { return this; }
    gcstring ToString(bool, bool) override { return GetName(false); }
    void FromString(const gcstring &ValueStr, bool Verify) override;
    bool IsValueCacheValid() const override { return true; }
    void GetFeatures(FeatureList_t &Features) const override;
};

/// The Boolean node type.
class CBooleanNode : public CNodeImpl, public IBoolean {
public:
    using CNodeImpl::CNodeImpl;

    EInterfaceType GetPrincipalInterfaceType() const override { return intfIBoolean; }
    INode *GetNode() override { return this; }
    gcstring ToString(bool Verify, bool IgnoreCache) override;
    void FromString(const gcstring &ValueStr, bool Verify) override;
    bool IsValueCacheValid() const override;
    void SetValue(bool Value, bool Verify) override;
    bool GetValue(bool Verify, bool IgnoreCache) const override;

protected:
    EAccessMode OwnAccessMode() const override { return m_source.AccessMode(); }
    /// Other nodes see 0 and 1.
    int64_t DoReadInteger(bool ignoreCache) const override;
    void DoWriteInteger(int64_t value, SWriting how) override;
    int64_t NaturalIntegerLimit(ELimit limit) const override { return limit == ELimit::Min ? 0 : 1; }
    ECachingMode DoCachingMode() const override { return m_source.CachingMode(); }
    bool DoIsCached() const override { return m_source.IsCached(); }

private:
    int64_t OnValue() const;
    int64_t OffValue() const;

    TValueSource<int64_t> m_source{*this};
};

/// The Command node type.
class CCommandNode : public CNodeImpl, public ICommand {
public:
    using CNodeImpl::CNodeImpl;

    EInterfaceType GetPrincipalInterfaceType() const override { return intfICommand; }
    INode *GetNode() override { return this; }
    gcstring ToString(bool Verify, bool IgnoreCache) override;
    void FromString(const gcstring &ValueStr, bool Verify) override;
    bool IsValueCacheValid() const override { return false; }
    void Execute(bool Verify) override;
    bool IsDone(bool Verify) override;
    /// There is something to find out only while the command runs.
    void Polled() override {
        if (m_isRunning)
            CNodeImpl::Polled();
    }

protected:
    EAccessMode OwnAccessMode() const override { return m_source.AccessMode(); }
    int64_t DoReadInteger(bool ignoreCache) const override { return m_source.Read(ignoreCache); }
    void DoWriteInteger(int64_t value, SWriting how) override { m_source.Write(value, how); }
    ECachingMode DoCachingMode() const override { return NoCache; }

private:
    int64_t CommandValue() const;

    TValueSource<int64_t> m_source{*this};
    bool m_isRunning = false;
};

/// The String node type: a text of its own, or that of another node.
class CStringNode : public CNodeImpl, public IString {
public:
    using CNodeImpl::CNodeImpl;

    EInterfaceType GetPrincipalInterfaceType() const override { return intfIString; }
    INode *GetNode() override { return this; }
    gcstring ToString(bool Verify, bool IgnoreCache) override { return GetValue(Verify, IgnoreCache); }
    void FromString(const gcstring &ValueStr, bool Verify) override { SetValue(ValueStr, Verify); }
    bool IsValueCacheValid() const override;
    void SetValue(const gcstring &Value, bool Verify) override;
    gcstring GetValue(bool Verify, bool IgnoreCache) override;
    int64_t GetMaxLength() override;

protected:
    EAccessMode OwnAccessMode() const override;
    std::string DoReadText(bool ignoreCache) const override;
    void DoWriteText(const std::string &text) override;
    int64_t DoMaxTextLength() const override;
    ECachingMode DoCachingMode() const override;
    bool DoIsCached() const override;

private:
    std::optional<std::string> m_text;
};

/// The StringReg node type: text in a register, ended by a zero byte unless it fills it.
class CStringRegNode : public CRegisterNode, public IString {
public:
    using CRegisterNode::CRegisterNode;

    EInterfaceType GetPrincipalInterfaceType() const override { return intfIString; }
    INode *GetNode() override { return this; }
    gcstring ToString(bool Verify, bool IgnoreCache) override { return GetValue(Verify, IgnoreCache); }
    void FromString(const gcstring &ValueStr, bool Verify) override { SetValue(ValueStr, Verify); }
    bool IsValueCacheValid() const override { return CRegisterNode::IsValueCacheValid(); }
    void SetValue(const gcstring &Value, bool Verify) override;
    gcstring GetValue(bool Verify, bool IgnoreCache) override;
    int64_t GetMaxLength() override { return GetLength(); }

protected:
    std::string DoReadText(bool ignoreCache) const override;
    void DoWriteText(const std::string &text) override;
    int64_t DoMaxTextLength() const override { return static_cast<int64_t>(CRegisterNode::Length()); }
};

} // namespace GenApi
