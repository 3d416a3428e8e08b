#include "tool.h"

namespace vemtool {
int CmdQuery(Args) { return Usage("query: not built yet"); }
int CmdExport(Args) { return Usage("export: not built yet"); }
int CmdDemo(Args) { return Usage("demo: not built yet"); }
}  // namespace vemtool
