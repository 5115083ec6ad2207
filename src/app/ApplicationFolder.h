#pragma once

#include <string>

namespace lumivane {

// The per-user data folder where shows and the Last* files live: `requested` when given, else the
// user's data folder for the program. On first use it is seeded with the factory files; files the
// user already has are never overwritten. Answers an empty string, with `error` set, when the
// folder cannot be made.
std::string PrepareApplicationFolder(const std::string& requested, std::string& error);

}  // namespace lumivane
