// What a debugger and a project browser ask after a load: each input is read as a node file and as
// a task file, with the statement model switched on and off, and whatever loads is asked everything
// (path maps and addresses, line maps, cross references, the tree view, dumps, expansion, offsets,
// clone, store and load again). Nothing may crash, hang or grow without bound.
#include "demo_build.h"
#include "fuzz_common.h"
#include "questions.h"
#include "seed_shape.h"

namespace {

void Ask(CVemBaseNode* root) {
    if (!root) return;
    vemquestions::AskEverything(root, vemfuzz::TheScratch().path());
    VemDeleteNode(root);
}

CVemBaseNode* ReadTask(const std::uint8_t* data, std::size_t size) {
    CMemFile file(data, size);
    try {
        CArchive ar(&file, CArchive::load);
        return VemReadObject(ar);
    } catch (const CException&) {
        return nullptr;  // the user exception of a statement kind without a class reaches the caller
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    vemfuzz::TheScratch();
    LurSetEvemEnabled(1);  // the task files of the seeds stand in the working directory
    CVemBaseNode* exe = vembuild::BuildResource(vemfuzz::SeedShape());
    if (!vembuild::WriteResource(exe, vemfuzz::kTaskDirectory, "resource.vem")) std::abort();
    VemDeleteNode(exe);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const char* name = vemfuzz::PutFile("input.vem", data, size);
    for (const int on : {1, 0}) {
        LurSetEvemEnabled(on);
        Ask(VemLoadNode(CString(name)));
        Ask(ReadTask(data, size));
    }
    return 0;
}
