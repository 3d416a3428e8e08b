// Writes what a host must write byte for byte like every other host: random trees of nodes of
// every class (node files and their text dumps) and byte arrays of every target layout filled
// through the layout code, each as its object record. scripts/hosts.sh runs it on every host and
// compares the files. Pointers in the dumps are the C library's %p, which differs by host; they
// are masked.
// usage: vem32_hostbytes DIR
#include <cstdio>
#include <regex>
#include <string>

#include "platform/archive.h"
#include "platform/file.h"
#include "random_tree.h"
#include "test_util.h"
#include "vem32_classes.h"
#include "vem_settings.h"

namespace {

constexpr unsigned kSeed = 19;
constexpr int kTrees = 24;

// Values whose bytes differ in every position, so that a byte in the wrong place shows.
void FillThroughLayout(CVemByteArray* array) {
    VemBaAppendByte(array, 0x81);
    VemBaAppendWord(array, 0x1234);
    VemBaAppendDword(array, 0x89ABCDEFu);
    VemBaAppendOffset(array, 0xFEDC);
    VemBaAppendString(array, "text", 6);
    VemBaAppendCStyleString(array, "c-text", 8);
    VemBaAppendStringRaw(array, "raw", 3);
    VemBaPatchWord(array, 1, 0x5678);
    VemBaPatchDword(array, 4, 0x01020304u);
}

void MaskPointers(const std::string& name) {
    static const std::regex pointer(R"(( = )(\(nil\)|0x[0-9a-f]+|[0-9A-Fa-f]{8}|[0-9A-Fa-f]{16})\n)");
    const std::string text = vemtest::ReadFileText(name);
    vemtest::WriteFileText(name, std::regex_replace(text, pointer, "$1<pointer>\n"));
}

bool WriteLayouts(const std::string& name) {
    CFile file;
    if (!file.Open(name.c_str(), CFile::modeCreate | CFile::modeWrite | CFile::typeBinary)) return false;
    CArchive ar(&file, CArchive::store);
    constexpr u8 kFract = 6;  // the one layout of units that a fract array knows
    struct Layout {
        int motorola;
        u8 byteSize;
        int fract;
    };
    for (u16 alignment : {1, 2, 4})
        for (const Layout& layout :
             {Layout{0, 1, 0}, Layout{0, 2, 0}, Layout{1, 1, 0}, Layout{1, 2, 0}, Layout{0, kFract, 1}}) {
            CVemByteArray* array = VemBaNewByteArray(layout.motorola, alignment, layout.byteSize, layout.fract);
            FillThroughLayout(array);
            VemBaSerialize(array, ar);
            VemBaDeleteByteArray(array);
        }
    ar.Close();
    file.Close();
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: vem32_hostbytes DIR\n");
        return 2;
    }
    const std::string dir = argv[1];
    if (!VemMakeDirectory(dir.c_str())) {
        std::fprintf(stderr, "vem32_hostbytes: cannot make %s\n", dir.c_str());
        return 1;
    }
    LurResetSettings();  // with the statement model
    vemtest::Random r(kSeed);
    for (int i = 0; i < kTrees; ++i) {
        CVemBaseNode* tree = vemtest::RandomTree(r, dir);
        const std::string name = dir + "/tree" + std::to_string(i);
        const bool written =
            VemWriteNode(tree, (name + ".vem").c_str()) == 1 && CVemNodeDump(tree, CString(name + ".txt")) == 1;
        VemDeleteNode(tree);
        if (written) MaskPointers(name + ".txt");
        if (!written) {
            std::fprintf(stderr, "vem32_hostbytes: cannot write %s\n", name.c_str());
            return 1;
        }
    }
    if (!WriteLayouts(dir + "/layouts.bin")) {
        std::fprintf(stderr, "vem32_hostbytes: cannot write the layouts\n");
        return 1;
    }
    return 0;
}
