#pragma once

#include "GenApi/IBoolean.h"
#include "GenApi/ICategory.h"
#include "GenApi/ICommand.h"
#include "GenApi/IDeviceInfo.h"
#include "GenApi/IEnumEntry.h"
#include "GenApi/IEnumeration.h"
#include "GenApi/IFloat.h"
#include "GenApi/IInteger.h"
#include "GenApi/INode.h"
#include "GenApi/INodeMap.h"
#include "GenApi/IPort.h"
#include "GenApi/IRegister.h"
#include "GenApi/ISelector.h"
#include "GenApi/IString.h"

namespace GenApi {

/// Points to one interface of a node, found by dynamic cast: empty when the node is missing or of another kind. Does
/// not own the node, which lives as long as its node map.
template <class T, class B = IBase> class CPointer {
public:
    CPointer() = default;
    CPointer(B *pB) : m_pT(dynamic_cast<T *>(pB)) {}
    CPointer &operator=(B *pB) {
        m_pT = dynamic_cast<T *>(pB);
        return *this;
    }

    bool IsValid() const { return m_pT != nullptr; }
    operator T *() const { return m_pT; }
    /// \throws LogicalErrorException when empty; so does operator->.
    T &operator*() const { return *Checked(); }
    T *operator->() const { return Checked(); }

private:
    T *Checked() const {
        if (m_pT == nullptr)
            throw LOGICAL_ERROR_EXCEPTION("NULL pointer dereferenced");
        return m_pT;
    }

    T *m_pT = nullptr;
};

using CBasePtr = CPointer<IBase>;
using CNodePtr = CPointer<INode>;
using CValuePtr = CPointer<IValue>;
using CSelectorPtr = CPointer<ISelector>;
using CIntegerPtr = CPointer<IInteger>;
using CFloatPtr = CPointer<IFloat>;
using CBooleanPtr = CPointer<IBoolean>;
using CCommandPtr = CPointer<ICommand>;
using CStringPtr = CPointer<IString>;
using CRegisterPtr = CPointer<IRegister>;
using CCategoryPtr = CPointer<ICategory>;
using CEnumerationPtr = CPointer<IEnumeration>;
using CEnumEntryPtr = CPointer<IEnumEntry>;
using CPortPtr = CPointer<IPort>;
using CDeviceInfoPtr = CPointer<IDeviceInfo, INodeMap>;

} // namespace GenApi
