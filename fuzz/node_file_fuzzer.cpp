// VemLoadNode on a node file; what loads is dumped (every node's text) and deleted. The task files of
// the seeds (the test resource's and the demonstration's) stand in the working directory.
#include "demo_build.h"
#include "fuzz_common.h"
#include "seed_shape.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    vemfuzz::TheScratch();
    LurSetEvemEnabled(1);
    CVemBaseNode* exe = vembuild::BuildResource(vemfuzz::SeedShape());
    if (!vembuild::WriteResource(exe, vemfuzz::kTaskDirectory, "resource.vem")) std::abort();
    VemDeleteNode(exe);
    CVemBaseNode* demo = vemtool::BuildDemo(vemtool::DemoShape{});
    if (!vemtool::WriteDemo(demo, vemfuzz::kTaskDirectory, "demo.vem")) std::abort();
    VemDeleteNode(demo);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const char* name = vemfuzz::PutFile("input.vem", data, size);
    CVemBaseNode* root = VemLoadNode(CString(name));
    if (!root) return 0;
    CMemFile dump;
    CVemNodeDump(root, &dump);
    VemDeleteNode(root);
    return 0;
}
