// What tests with threads need: one body on several at once, and waiting for a condition.
#pragma once

#include <chrono>
#include <thread>
#include <vector>

namespace VX3::Test {

// Calls `body` with 0 to count - 1.
template <typename Body>
void OnThreads(unsigned int count, Body body) {
    std::vector<std::thread> threads;
    for (unsigned int i = 0; i < count; ++i)
        threads.emplace_back([&body, i] { body(i); });
    for (std::thread& thread : threads)
        thread.join();
}

// True as soon as `condition` holds, false when the time is over.
template <typename Condition>
bool Eventually(Condition condition, std::chrono::milliseconds time = std::chrono::seconds(10)) {
    const auto deadline = std::chrono::steady_clock::now() + time;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

} // namespace VX3::Test
