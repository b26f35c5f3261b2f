#pragma once

namespace GenApi {

/// An object that deletes itself; a node map implements it: `dynamic_cast<IDestroy *>(pNodeMap)->Destroy()`.
class IDestroy {
public:
    virtual void Destroy() = 0;

protected:
    virtual ~IDestroy() = default;
};

} // namespace GenApi
