#pragma once

#include <filesystem>
#include <string>

namespace tavrin::platform {

// The user's home: $HOME, else the password database's entry; empty when
// neither names one.
std::string homeDirectory();

// Where applications keep state that outlives a run: $XDG_STATE_HOME when it
// is an absolute path (a relative one is ignored, as the XDG base directories
// say), else ~/.local/state; empty without a home.
std::filesystem::path stateHome();

// Where applications keep settings: $XDG_CONFIG_HOME when it is an absolute
// path, else ~/.config; empty without a home.
std::filesystem::path configHome();

}  // namespace tavrin::platform
