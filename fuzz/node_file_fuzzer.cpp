// VemLoadNode on a node file, with the statement model switched on and off; what loads is dumped
// (every node's text) and deleted. The task files of the seeds (the test resource's and the
// demonstration's) stand in the working directory.
#include "demo_build.h"
#include "fuzz_common.h"
#include "seed_shape.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    vemfuzz::TheScratch();
    LurSetEvemEnabled(1);  // the seeds are written with the statement model
    CVemBaseNode* exe = vembuild::BuildResource(vemfuzz::SeedShape());
    if (!vembuild::WriteResource(exe, vemfuzz::kTaskDirectory, "resource.vem")) std::abort();
    VemDeleteNode(exe);
    CVemBaseNode* demo = vemtool::BuildDemo(vemtool::DemoShape{});
    if (!vemtool::WriteDemo(demo, vemfuzz::kTaskDirectory, "demo.vem", vemtool::DemoShape{})) std::abort();
    VemDeleteNode(demo);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const char* name = vemfuzz::PutFile("input.vem", data, size);
    for (const int on : {1, 0}) {  // also read with another setting than it was written with
        LurSetEvemEnabled(on);
        CVemBaseNode* root = VemLoadNode(CString(name));
        if (!root) continue;
        CMemFile dump;
        CVemNodeDump(root, &dump);
        VemDeleteNode(root);
    }
    return 0;
}
