// What the program's exit status tells. The help text and docs/vx3.md show the same table.
#pragma once

namespace VX3::Tool {

namespace Exit {
constexpr int Done = 0;
constexpr int Failure = 1;
constexpr int WrongUsage = 2;
constexpr int Incomplete = 3; // frames, settings or features are missing from what was asked for
constexpr int Adjusted = 4;   // the camera holds another value than the one asked for
constexpr int Nothing = 5;    // there was nothing to list, save or load
constexpr int Interrupted = 130;
} // namespace Exit

inline constexpr const char* ExitTable = "Exit status: 0 all done as asked, 1 failure, 2 wrong usage,\n"
                                         "3 done but not all of it (frames or features are missing),\n"
                                         "4 done but a value was adjusted by the camera,\n"
                                         "5 there was nothing to do, 130 interrupted";

// The one that tells more, for verbs that do several things.
constexpr int Graver(int a, int b) {
    constexpr int Order[] = {Exit::Failure, Exit::Interrupted, Exit::Incomplete, Exit::Adjusted,
                             Exit::Nothing};
    for (const int code : Order)
        if (a == code || b == code)
            return code;
    return Exit::Done;
}

} // namespace VX3::Tool
