// The version of the program. The build generates the source, host/kvx/version.cpp.in.
#pragma once

namespace kvx {

/// The version, and the revision of the source if the tree is a git repository: "0.1.0 (revision
/// 0123456789ab)".
extern const char* const versionText;

} // namespace kvx
