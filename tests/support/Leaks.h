#pragma once

#include <cstddef>
#include <functional>

/// What a process holds; equal before and after a piece of work that leaves nothing behind.
struct Holdings {
    std::size_t descriptors = 0;
    std::size_t threads = 0;

    static Holdings now();
    friend bool operator==(const Holdings &a, const Holdings &b) {
        return a.descriptors == b.descriptors && a.threads == b.threads;
    }
};

/// Memory of this process in RAM.
long residentMemory_KiB();

/// True as soon as the condition holds, false when it does not within the time.
bool eventually(const std::function<bool()> &condition, int timeout_ms = 5000);
