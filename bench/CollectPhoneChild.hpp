#pragma once

#include <string_view>

namespace tavrin::bench {

// The first argument with which the whole-run benchmark starts this program
// again, to collect one phone in a process of its own.
inline constexpr std::string_view collectPhoneFlag = "--collect-phone";

// When this program was started to collect a phone (see PipelineBench),
// collects it, writes its figures to standard output and returns the exit
// status; otherwise returns -1 without doing anything.
int collectPhoneChild(int argc, char** argv);

}  // namespace tavrin::bench
