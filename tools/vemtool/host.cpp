// The one question of the tool that the standard library cannot answer: whether progress would
// reach a person.
#include "host.h"

#include <unistd.h>

namespace vemtool {

bool StderrIsTerminal() { return ::isatty(2) == 1; }

}  // namespace vemtool
