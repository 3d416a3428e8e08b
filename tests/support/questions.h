// What a debugger and a project browser ask of a loaded tree, all of it, for the tests of bounded
// questions and for the fuzz harness of questions. Also the trees whose references lead in circles
// or far, built through the exported functions.
#pragma once

#include <functional>
#include <string>

#include "vem32_classes.h"

namespace vemquestions {

struct Answers {
    long paths = 0;     // entries of all path maps
    long offsets = 0;   // addresses asked of them
    long lineMaps = 0;  // units mapped line by line
    long crossReferences = 0;
    long shown = 0;  // nodes stepped through in the tree view
    long dumpBytes = 0;
    int storedAgain = 0;  // 1 if the tree stored, loaded and stored again
    long exceptions = 0;  // questions answered with an exception that the contract lets pass
};

// Runs one question; a test measures each one by itself.
using Asker = void (*)(void* context, const std::function<void()>& question);

// Asks everything of the tree. Files go to `directory`; the tree is changed (arrays expanded,
// offsets computed) and stays the caller's.
Answers AskEverything(CVemBaseNode* root, const std::string& directory, Asker asker = nullptr, void* context = nullptr);

// A compiled task "TASK" holding the function block "I : T", which holds the instance "I" of type
// "T" marked as a reference: the instance's block is its own parent.
CVemBaseNode* BuildSelfReferringTask();
// The blocks "A : T" and "B : T", each holding a reference instance of the other.
CVemBaseNode* BuildMutualTask();
// The blocks "I0 : T" to "I<n-1> : T" side by side, each holding the reference instance of the next.
CVemBaseNode* BuildChainTask(int length);

}  // namespace vemquestions
