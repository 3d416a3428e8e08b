#include "questions.h"

#include <algorithm>
#include <vector>

namespace vemquestions {

namespace {

// Stepping and hit tests each walk the shown nodes: the first ones are asked, not all.
constexpr std::size_t kMostShown = 256;

void Collect(CVemBaseNode* node, std::vector<CVemBaseNode*>& all) {
    all.push_back(node);
    for (POSITION pos = node->Children.GetHeadPosition(); pos;)
        Collect(static_cast<CVemBaseNode*>(node->Children.GetNext(pos)), all);
}

void AskPaths(CVemBaseNode* task, Answers& answers) {
    VemCreateChildNodePathList(task);
    CMapStringToOb* map = VemGetNodePath2NodeList(task);
    if (!map) return;
    CString key;
    CObject* node = nullptr;
    for (POSITION pos = map->GetStartPosition(); pos;) {
        map->GetNextAssoc(pos, key, node);
        ++answers.paths;
        answers.offsets += VemGetAbsoluteVariableOffset(task, key) != 0;
        VemGetName(static_cast<CVemBaseNode*>(node));
    }
    CDWordArray* table = task->GetAbsOffsets();
    for (int i = 0; table && i < table->GetSize(); ++i) VemGetAbsOffset(task, i);
}

void AskStatements(CVemBaseNode* exe, const std::vector<CVemBaseNode*>& all, Answers& answers) {
    CObList* units = VemGetEvemRootNodeListPtr(exe);
    if (!units) return;
    CMapStringToOb table;
    EVemCRBuildPouTableEx(exe, &table);
    for (POSITION pos = units->GetHeadPosition(); pos;) {
        auto* unit = static_cast<CEVemBaseNode*>(units->GetNext(pos));
        CMapStringToString offsets;
        CMapStringToOb statements;
        answers.lineMaps += EVemFillAwlLine2UcodeOffsetMap(exe, EVemGetPathName(unit), &offsets);
        EVemFillAwlLine2EvemNodeMap(exe, EVemGetPathName(unit), &statements);
        for (CVemBaseNode* target : all) {
            const tVemNodeType type = VemGetNodeType(target);
            if (type == kVemTuiTaskNode || type == kVemExeNode) continue;
            CStringList paths;
            CWordArray lines;
            CWordArray kinds;
            EVemCRExecQueryEx(unit, target, &paths, &lines, &kinds, kEVemCrRead | kEVemCrWrite | kEVemCrCall);
            answers.crossReferences += paths.GetCount();
        }
    }
}

void AskTreeView(CVemBaseNode* root, const std::vector<CVemBaseNode*>& all, Answers& answers) {
    CVemRecordingDC dc;
    VemDraw(root, &dc, CPoint(0, 0), CPoint(0, 0), all.back());
    for (std::size_t i = 0; i < all.size() && i < kMostShown; ++i) {
        const CRect rect = VemGetNodeSymbolRect(all[i]);
        VemGetSelectedNode(root, CPoint(rect.left + 1, rect.top + 1));
    }
    VemInitPrevNextStaticVar(root);
    CVemBaseNode* at = root;
    for (; at && answers.shown < static_cast<long>(kMostShown); ++answers.shown) at = VemGetSelectedNextNode(root, at);
    at = all.back();
    for (std::size_t back = 0; at && back < kMostShown; ++back) at = VemGetSelectedPrevNode(root, at);
}

void AskFiles(CVemBaseNode* root, const std::string& directory, Answers& answers) {
    CMemFile dump;
    CVemNodeDump(root, &dump);
    answers.dumpBytes = static_cast<long>(dump.GetLength());
    CVemBaseNode* copy = VemClone(root);
    VemDeleteNode(copy);
    const std::string first = directory + "/again.vem";
    const std::string second = directory + "/again2.vem";
    if (!VemWriteNode(root, first.c_str())) return;
    CVemBaseNode* again = VemLoadNode(first.c_str());
    if (!again) return;
    answers.storedAgain = VemWriteNode(again, second.c_str());
    VemDeleteNode(again);
}

}  // namespace

Answers AskEverything(CVemBaseNode* root, const std::string& directory, Asker asker, void* context) {
    Answers answers;
    std::vector<CVemBaseNode*> all;
    Collect(root, all);
    // The platform's exceptions that a flat function lets pass (an index outside an array, a range
    // read from a file that holds fewer bounds than it claims) are answers too.
    const auto ask = [&](const std::function<void()>& question) {
        const std::function<void()> guarded = [&] {
            try {
                question();
            } catch (const CException&) {
                ++answers.exceptions;
            }
        };
        if (asker) {
            asker(context, guarded);
        } else {
            guarded();
        }
    };
    const auto askPaths = [&] {
        for (CVemBaseNode* node : all) {
            if (VemGetNodeType(node) == kVemTuiTaskNode) ask([&] { AskPaths(node, answers); });
        }
    };
    askPaths();
    ask([&] {
        for (CVemBaseNode* node : all) VemGetReferenceNode(node);
    });
    for (CVemBaseNode* node : all) {
        if (VemGetNodeType(node) == kVemExeNode) ask([&] { AskStatements(node, all, answers); });
    }
    ask([&] { AskTreeView(root, all, answers); });
    ask([&] { AskFiles(root, directory, answers); });
    ask([&] {
        std::vector<u16> starts(kVemSegmentKindLimit, 2);
        VemComputeOffsets(root, starts.data());
    });
    ask([&] { VemExpandArray(root); });
    all.clear();  // the expansion made new nodes and took prototypes away
    Collect(root, all);
    askPaths();
    return answers;
}

namespace {

CVemBaseNode* Block(CVemBaseNode* task, const std::string& name, const std::string& instance) {
    CVemBaseNode* fb = VemCreateCVemFbNode((name + " : T").c_str(), "");
    VemAddChildTail(task, fb);
    CVemBaseNode* inst = VemNewNode(kVemFbInstanceNode);
    VemSetName(inst, instance.c_str());
    VemSetTypeName(inst, "T");
    VemSetReference(inst, 1);
    VemAddChildTail(fb, inst);
    return fb;
}

CVemBaseNode* Task() {
    CVemBaseNode* task = VemNewNode(kVemTuiTaskNode);
    VemSetName(task, "TASK");
    return task;
}

}  // namespace

CVemBaseNode* BuildSelfReferringTask() {
    CVemBaseNode* task = Task();
    Block(task, "I", "I");
    return task;
}

CVemBaseNode* BuildMutualTask() {
    CVemBaseNode* task = Task();
    Block(task, "A", "B");
    Block(task, "B", "A");
    return task;
}

CVemBaseNode* BuildChainTask(int length) {
    CVemBaseNode* task = Task();
    for (int i = 0; i < length; ++i) Block(task, "I" + std::to_string(i), "I" + std::to_string(i + 1));
    return task;
}

}  // namespace vemquestions
