// What the tool asks of the host system beyond the standard library.
#pragma once

namespace vemtool {

bool StderrIsTerminal();

}  // namespace vemtool
