// Paths as the automation classes for files read them: both / and \ separate, so these classes
// cannot reach a file whose name has a \. "c:" is a drive in the text only.
#pragma once

#include <string>

#include "values/text_encoding.h"

namespace mirolta::host {

// The parts of a path; a separator at its end does not count. No part needs to exist.
Units FileNameOf(UnitsView path);
Units BaseNameOf(UnitsView path);      // without the extension
Units ExtensionOf(UnitsView path);     // without its dot
Units ParentFolderOf(UnitsView path);  // "" for the root and for a name alone
Units DriveNameOf(UnitsView path);     // "/" for an absolute path, "c:", or ""
// JoinedPath puts one separator between both: the last one in `path`, / if it has none.
Units JoinedPath(UnitsView path, UnitsView name);

// SystemPath returns the path for the system.
// Errors: throws CallError kBadFileName for a zero.
std::string SystemPath(UnitsView path);
// AbsolutePath makes a system path absolute, without "." and ".."; symbolic links are not followed.
std::string AbsolutePath(const std::string& path);
// Separators at the end are removed, but not the root.
std::string WithoutEnd(std::string path);
bool EndsWithSeparator(const std::string& path);
// `folder` with or without a separator at its end.
std::string PathIn(const std::string& folder, const std::string& name);

// MatchesPattern compares a whole name: * is any text, ? one character, and *.* any name.
bool MatchesPattern(UnitsView name, UnitsView pattern);
bool HasWildcard(UnitsView name);

}  // namespace mirolta::host
