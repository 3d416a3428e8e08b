// Writes the seed corpora of the harnesses: the files that the tests and the demonstration write,
// one directory per harness below the directory given.
//   make_seeds <out>   ->  <out>/node_file, <out>/task_file, <out>/bytearray, ...
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "demo_build.h"
#include "fuzz_common.h"
#include "memory/segtbl.h"
#include "questions.h"
#include "seed_shape.h"
#include "statement/evembase.h"

namespace fs = std::filesystem;

namespace {

fs::path g_out;

void Put(const char* harness, const std::string& name, const std::vector<u8>& bytes) {
    const fs::path dir = g_out / harness;
    fs::create_directories(dir);
    std::ofstream(dir / name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

void PutText(const char* harness, const std::string& name, const std::string& text) {
    Put(harness, name, std::vector<u8>(text.begin(), text.end()));
}

std::vector<u8> FileBytes(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<u8>(std::istreambuf_iterator<char>(in), {});
}

// The arrays of a segment table and the table itself.
void PutTable(CSegmentTable* table, const std::string& name) {
    if (!table) return;
    Put("segtbl", name, vemfuzz::Stored([&](CArchive& ar) { table->Serialize(ar); }));
    for (u16 i = 0; i < table->GetSize() && i < 8; ++i) {
        CVemByteArray* array = VemSegTblGetSegment(table, i);
        if (array)
            Put("bytearray", name + "-" + std::to_string(i),
                vemfuzz::Stored([&](CArchive& ar) { VemBaSerialize(array, ar); }));
    }
}

// The code node's record, behind the byte that switches the statement model on or off.
void PutCode(CEVemBaseNode* code, const std::string& name) {
    std::vector<u8> record = vemfuzz::Stored([&](CArchive& ar) { code->Serialize(ar); });
    for (const u8 on : {u8{1}, u8{0}}) {
        std::vector<u8> bytes{on};
        bytes.insert(bytes.end(), record.begin(), record.end());
        Put("code_chain", name + (on ? "-on" : "-off"), bytes);
    }
}

// A resource written the way the compiler writes it, with task files named relative to the
// working directory; the node harness writes the same task files before it starts.
template <class Build, class Write>
void PutResource(const std::string& name, Build build, Write write) {
    const fs::path work = g_out / ".work" / name;
    fs::create_directories(work);
    const fs::path home = fs::current_path();
    fs::current_path(work);
    CVemBaseNode* exe = build();
    CObList* codes = VemGetEvemRootNodeListPtr(exe);
    int n = 0;
    for (POSITION pos = codes ? codes->GetHeadPosition() : nullptr; pos; ++n) {
        PutCode(static_cast<CEVemBaseNode*>(codes->GetNext(pos)), name + "-code" + std::to_string(n));
    }
    PutTable(VemGetSegmentTable(exe), name + "-exe");
    PutTable(VemGetComponentList(exe), name + "-components");
    if (!write(exe)) std::abort();
    VemDeleteNode(exe);
    for (const auto& entry : fs::directory_iterator(".")) {
        const std::string file = entry.path().filename().string();
        if (entry.path().extension() == ".tsk") {
            Put("task_file", name + "-" + file, FileBytes(entry.path()));
            std::vector<u8> bytes = FileBytes(entry.path());
            CMemFile in(bytes);
            CArchive ar(&in, CArchive::load);
            CVemBaseNode* task = VemReadObject(ar);
            if (task) PutTable(VemGetSegmentTable(task), name + "-" + file);
            VemDeleteNode(task);
        } else {
            Put("node_file", name + "-" + file, FileBytes(entry.path()));
        }
    }
    fs::current_path(home);
}

void NodeSeeds() {
    PutResource(
        "resource", [] { return vembuild::BuildResource(vemfuzz::SeedShape()); },
        [](CVemBaseNode* exe) { return vembuild::WriteResource(exe, vemfuzz::kTaskDirectory, "resource.vem"); });
    PutResource(
        "demo", [] { return vemtool::BuildDemo(vemtool::DemoShape{}); },
        [](CVemBaseNode* exe) {
            return vemtool::WriteDemo(exe, vemfuzz::kTaskDirectory, "demo.vem", vemtool::DemoShape{});
        });
    // Every class alone, as a root with one child, and in object form.
    const int types[] = {1, 2, 3, 4, 5, 6, 10, 11, 12, 13, 14, 15, 16, 17, 18};
    for (const int type : types) {
        CVemBaseNode* root = VemNewNode(static_cast<tVemNodeType>(type));
        VemSetName(root, "N");
        CVemBaseNode* child = VemCreateCVemVariableNode("V", 4, kCbeTypeInt, 2, 0);
        VemAddChildTail(root, child);
        const std::string file = (g_out / ".work" / ("class" + std::to_string(type) + ".vem")).string();
        if (!VemWriteNode(root, file.c_str())) std::abort();
        Put("node_file", "class" + std::to_string(type), FileBytes(file));
        Put("task_file", "class" + std::to_string(type),
            vemfuzz::Stored([&](CArchive& ar) { VemWriteObject(root, ar); }));
        VemDeleteNode(root);
    }
}

// The questions start from the files of the node harness and from trees whose references lead in
// circles or far.
void QuestionSeeds() {
    for (const auto& entry : fs::directory_iterator(g_out / "node_file")) {
        Put("questions", entry.path().filename().string(), FileBytes(entry.path()));
    }
    const std::pair<const char*, CVemBaseNode*> trees[] = {
        {"self", vemquestions::BuildSelfReferringTask()},
        {"mutual", vemquestions::BuildMutualTask()},
        {"chain", vemquestions::BuildChainTask(60)},  // short enough to run fast; the tests take 10000
    };
    for (auto [name, tree] : trees) {
        CVemBaseNode* node = tree;
        const std::string file = (g_out / ".work" / (std::string(name) + ".vem")).string();
        if (!VemWriteNode(node, file.c_str())) std::abort();
        Put("questions", name, FileBytes(file));
        Put("questions", std::string(name) + "-task", vemfuzz::Stored([&](CArchive& ar) { VemWriteObject(node, ar); }));
        VemDeleteNode(node);
    }
}

void ArraySeeds() {
    struct Kind {
        int motorola;
        u8 byteSize;
        int fract;
    };
    const Kind kinds[] = {{0, 1, 0}, {1, 1, 0}, {0, 2, 0}, {1, 2, 0}, {0, 6, 1}};
    int n = 0;
    CSegmentTable* table = VemSegTblNew();
    for (const Kind& kind : kinds) {
        CVemByteArray* array = VemBaNewByteArray(kind.motorola, 2, kind.byteSize, kind.fract);
        VemBaAppendWord(array, 0x1234);
        VemBaAppendDword(array, 0xCAFEBABE);
        VemBaAppendString(array, "TEXT", 4);
        Put("bytearray", "kind" + std::to_string(n++),
            vemfuzz::Stored([&](CArchive& ar) { VemBaSerialize(array, ar); }));
        VemSegTblAddNewSegment(table, array);
    }
    CVemByteArray* none = nullptr;
    Put("bytearray", "null", vemfuzz::Stored([&](CArchive& ar) { VemBaSerialize(none, ar); }));
    VemSegTblSetPouName(table, "POU");
    PutTable(table, "kinds");
    VemSegTblDelete(table);
}

// A code node with one statement of every kind that a unit can hold.
void CodeSeeds() {
    CEVemBaseNode* code = EVemCreateNode(kEVemPouCodeNode, "ALL");
    EVemSetPathName(code, "C:\\PRJ\\ALL.st");
    EVemSetPouType(code, kEVemPouFunctionBlock);
    for (int type = kEVemLdConstStmtNode; type < kEVemNodeTypeCount; ++type) {
        CEVemBaseNode* s = EVemAddNewStmtNode(code, static_cast<tEVemNodeType>(type));
        if (!s) continue;
        EVemSetAwlPosition(s, static_cast<u16>(type), 3);
        EVemSetUcodeOffset(s, static_cast<u16>(2 * type));
        EVemSetName(s, "X");
        EVemSetTypeName(s, "INT");
        EVemSetOffset(s, 6);
    }
    PutCode(code, "every-kind");
    EVemDeleteNode(code);
}

void SourceSeeds() {
    const std::string block =
        "$BEGIN_ZQ_HEADER\r\nNAME = PUMP\r\nTYPE = FB\r\nVERSION = 3\r\n  continued\r\n$END_ZQ_HEADER\r\n";
    const std::string body = "FUNCTION_BLOCK PUMP\r\nVAR\r\n  X : INT;\r\nEND_VAR\r\nLD X\r\nEND_FUNCTION_BLOCK\r\n";
    const std::string texts[] = {
        block + body,
        body,
        "(* comment *)\r\n" + block + "PROGRAM MAIN\r\nLD 1\r\nEND_PROGRAM\r\n",
        "PROGRAM MAIN\r\n" + block + "END_PROGRAM\r\n",
        block + "TYPE\r\n[1]\r\nEND_TYPE\r\n",
        "$BEGIN_ZQ_HEADER\r\nNAME = A\r\n",
        block,
    };
    int n = 0;
    for (const std::string& text : texts) {
        PutText("hfile_open", "source" + std::to_string(n), text);
        for (unsigned op = 0; op < 8; ++op) {
            std::string input(1, static_cast<char>(op));
            input += (op & 3) == 2 ? std::string("LD X") : std::string("NAME");
            input += '\0';
            input += (op & 3) == 2 ? std::string("LD Y") : std::string("VALVE");
            input += '\0';
            PutText("hfile_edit", "op" + std::to_string(op) + "-source" + std::to_string(n), input + text);
        }
        ++n;
    }
}

void IniSeeds() {
    PutText("inifile", "plain", "[Segment]\r\nDataBytes = 5\r\nData = 01 02 ab\r\nData0=CD\r\nData1=EF ; last\r\n");
    PutText("inifile", "sections", "[Other]\nDataBytes=1\nData=FF\n[segment]\ndatabytes=2\nDATA=10 20\n[Next]\n");
    PutText("inifile", "many", "[Segment]\nDataBytes=8\nData0=00 11\nData1=22 33\nData2=44 55\nData3=66 77\n");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s <out-directory>\n", argv[0]);
        return 2;
    }
    g_out = fs::absolute(argv[1]);
    fs::remove_all(g_out);
    fs::create_directories(g_out / ".work");
    LurSetEvemEnabled(1);
    NodeSeeds();
    QuestionSeeds();
    ArraySeeds();
    CodeSeeds();
    SourceSeeds();
    IniSeeds();
    fs::remove_all(g_out / ".work");
    return 0;
}
