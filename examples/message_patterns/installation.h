/// @file
/// Where this program is installed: <root>/bin/message_patterns, with the component libraries in <root>/lib. The build
/// tree has the same two folders, so the program runs there too.
#pragma once

namespace MessagePatterns {

/// Makes that root the one that the components repository looks at, unless ZELM_DIR names another. To be called before
/// anything of the repository, which reads the variable once, and before there is a second thread.
void useOwnInstallation();

}  // namespace MessagePatterns
