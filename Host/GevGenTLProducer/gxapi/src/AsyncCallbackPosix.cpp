#include "AsyncCallbackPosix.h"

#include "GxAssert.h"

#include <pthread.h>

namespace GxImp::Posix {

bool CAsyncCallback::Queue() noexcept {
    pthread_attr_t attributes;
    pthread_t thread{};
    GX_ASSERT(pthread_attr_init(&attributes) == 0);
    GX_ASSERT(pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED) == 0);
    const int error = pthread_create(&thread, &attributes, &CAsyncCallback::ThreadProcedure, this);
    GX_ASSERT(pthread_attr_destroy(&attributes) == 0);
    return error == 0;
}

void *CAsyncCallback::ThreadProcedure(void *self) noexcept {
    static_cast<CAsyncCallback *>(self)->Deliver();
    return nullptr;
}

} // namespace GxImp::Posix
