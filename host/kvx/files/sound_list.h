// Lists of sound files that a user names by one path: folders and playlist files (.m3u, .m3u8, .pls).
// All functions: [main].
#pragma once

#include "host/kvx/text/failure.h"

#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

namespace kvx {

/// The extensions of sound files, in lower case and without the dot. Other files of a folder are left out.
std::initializer_list<const char*> soundFileExtensions();

/// Receives a problem that does not end the search for files.
using ReportFailure = std::function<void(const Failure&)>;

/// Whether the name of a file is that of a playlist: .m3u, .m3u8 or .pls, in any case.
bool isPlaylistFile(const std::string& path);

/// Replace a folder by its sound files, and a playlist file by its entries. Any other path stays unchanged.
/// Shape    `isRecursive`: also search the folders in a folder. The files of a folder are sorted by name;
///          numbers in names are in numeric order. Hidden files and links to folders are left out. The
///          entries of a playlist file are URLs and paths; a relative path begins at the list's folder. The
///          URL of a file becomes its path.
/// Errors   throws Failure for a list that cannot be read or has no files. Leaves out a folder in a folder if
///          it cannot be read, and passes the problem to `report`.
std::vector<std::string> expandList(const std::string& path, bool isRecursive, const ReportFailure& report);

/// Check a path that expandList() has returned.
/// Errors  throws Failure for a URL, and for a playlist file in a playlist file, which are not played.
void refuseNestedLists(const std::string& path);

} // namespace kvx
