// Extensions: exported functions beyond the system's original set, for tools built on the library.
#pragma once

#include <cstddef>

#include "vem32_types.h"

// A message box of the library: the host's handler returns the button that was pressed (1 for OK).
using VemMessageBoxHandler = int (*)(const char* text, unsigned style, void* context);

extern "C" {
// Installs a handler of the library's message boxes (null restores the default, which writes them
// to standard error) and gives back the one before.
VEM_API VemMessageBoxHandler VemSetMessageBoxHandler(VemMessageBoxHandler handler, void* context);
}

// Why a load failed, for a caller that wants to tell the user.
struct tVemLoadReport {
    enum : int { kNone = 0, kCannotOpen = 1, kFileException = 2, kArchiveException = 3, kMemory = 4, kOther = 5 };
    int Failure;
    int Cause;             // cause code of the file or archive exception
    u64 Offset;            // bytes of the node file consumed when the load stopped
    char RecordClass[64];  // class of the record being read, if known
    char Message[256];     // the platform's text of the exception
};
static_assert(sizeof(tVemLoadReport) == 336 && offsetof(tVemLoadReport, Cause) == 4 &&
              offsetof(tVemLoadReport, Offset) == 8 && offsetof(tVemLoadReport, RecordClass) == 16 &&
              offsetof(tVemLoadReport, Message) == 80);

// A task that a load left out of the tree: its file was not found or gave no task, or the reading
// of its container stopped at another entry.
struct tVemMissingTask {
    enum : int {
        kNotFound = 1,     // no file under any of the names tried
        kNotReadable = 2,  // a file was there but could not be opened, was no plain file or held no task
        kNotCompiled = 3,  // the entry has no file; the container drops every task it read
        kSkipped = 4,      // the reading stopped at another entry, or that entry dropped this task
    };
    int Reason;
    const char* TaskName;  // the key of the entry
    const char* FileName;  // the file name as stored
    int TriedCount;
    const char* const* Tried;  // the names looked at, in order
};

// The tasks left out by one load, owned by the library until VemFreeTaskReport.
struct tVemTaskReport {
    int Count;
    const tVemMissingTask* Tasks;
    void* Internal;
};

extern "C" {
// Loads like VemLoadNode but shows no message box; on failure fills the report and gives null.
VEM_API CVemBaseNode* VemLoadNodeReport(const char* fileName, tVemLoadReport* report);

// Loads like VemLoadNodeReport and lists in `tasks` every task of every task container of the tree
// that did not come back from its file; no entry means the tree is whole. The list is empty when
// the result is null. Free it with VemFreeTaskReport, also after a failed load.
VEM_API CVemBaseNode* VemLoadNodeTaskReport(const char* fileName, tVemLoadReport* report, tVemTaskReport* tasks);
VEM_API void VemFreeTaskReport(tVemTaskReport* tasks);

// Where a load finds a task file whose stored name does not open here as a file (a resource copied
// to another directory, or written on another machine): by the last part of that name (behind the
// last backslash or slash), first in the directory of the file that holds the task container, then
// in each directory of the search path in turn; in each, the exact name first and then one equal
// without regard to case. A name that opens as stored is used as stored. The stored names stay as
// they are. The search is on by default, with an empty search path; switched off, a load opens the
// stored names only. Directories that do not exist or cannot be read are skipped.
VEM_API void VemSetTaskFileSearch(int enabled);
VEM_API int VemGetTaskFileSearch(void);
// Replaces the search path by `count` directories (null or empty entries are left out).
VEM_API void VemSetTaskFileDirectories(const char* const* directories, int count);
// Adds one directory at the end; 0 for a null or empty name.
VEM_API int VemAddTaskFileDirectory(const char* directory);
VEM_API void VemClearTaskFileDirectories(void);
}

// The key block of a source file. Each gives 0 if the file cannot be opened or the edit fails.
VEM_API int VemSrcGetValue(const char* sourceFile, const char* key, CString& value);
VEM_API int VemSrcSetValue(const char* sourceFile, const char* key, const char* value);
VEM_API int VemSrcGetUnit(const char* sourceFile, CString& kind, CString& name);

// The instance text that a variable node stores; empty on every other node.
VEM_API CString VemGetInstanceText(CVemBaseNode* node);

// The map from task names to task files of a task container; null on every other node.
VEM_API const CMapStringToString* VemGetTaskFileMap(CVemBaseNode* node);

// ---- Debugger answers: address to variable, code offset to statement, layout diff ------------------

// Address to variable. An index over the compiled tasks of a node (one compiled task, or every
// compiled task below an executable node), built once: per task the variables as sorted intervals
// of the task's block of segments (the absolute addresses of VemGetAbsoluteVariableOffset). A
// query walks no tree. The index notes every change of any tree that can move a variable (children
// added or removed, offsets, sizes, segments, segment lengths) and rebuilds itself at the next
// query; the node it was made on must live as long as the index.
struct tVemAddressIndex;

struct tVemAddressHit {
    CVemBaseNode* Task;  // compiled task whose segments the address lies in
    CVemBaseNode* Unit;  // unit (or the task) whose data or code segment holds the address, or null
    int UnitSegment;     // 1 the unit's data segment, 2 its code segment, 0 neither
    CVemBaseNode* Node;  // innermost variable covering the address; null: no variable there
    const char* Path;    // its path as VemGetAbsoluteVariableOffset takes it; an array for its elements
    const char* Name;    // the path down to the innermost part: element indices and members, "TASK1.A[2].M"
    u32 Address;         // absolute address in the task's block of segments
    u16 Segment;         // segment holding the address, 0xFFFF if none
    u16 SegmentOffset;   // offset of the address in that segment
    u32 Start;           // absolute address of the innermost variable's first unit
    u32 Size;            // its size
    u32 ByteOffset;      // Address - Start
    i32 Element;         // index of the innermost array element (last dimension fastest), or -1
    u32 Covering;        // variables covering the address, the innermost one included
};

// Results of a lookup.
enum : int { kVemAddrNoVariable = 0, kVemAddrFound = 1, kVemAddrBadTask = -1 };

extern "C" {
// An index of the compiled task, or of every compiled task below an executable node, in tree
// order; null for any other node.
VEM_API tVemAddressIndex* VemAddrIndexNew(CVemBaseNode* node);
VEM_API void VemAddrIndexDelete(tVemAddressIndex* index);  // null is accepted
VEM_API int VemAddrIndexTaskCount(tVemAddressIndex* index);
VEM_API CVemBaseNode* VemAddrIndexGetTask(tVemAddressIndex* index, int task);
// Number of the task of that name (any case), or -1.
VEM_API int VemAddrIndexFindTask(tVemAddressIndex* index, const char* name);
// 1 if no tree has changed since the index was built; 0 if the next query rebuilds it.
VEM_API int VemAddrIndexIsCurrent(tVemAddressIndex* index);
// The variable at an absolute address of the task's block, or at an offset of one of its
// segments. Fills the hit (texts valid until the next query of the index) and gives
// kVemAddrFound, kVemAddrNoVariable (the segment and unit are still told where known), or
// kVemAddrBadTask for a task number outside the index.
VEM_API int VemAddrLookup(tVemAddressIndex* index, int task, u32 address, tVemAddressHit* hit);
VEM_API int VemAddrLookupSegment(tVemAddressIndex* index, int task, u16 segment, u16 offset, tVemAddressHit* hit);
}

// Code offset to statement. An index over the code nodes of an executable node: per unit the
// statements sorted by code offset. The statement at an offset is the last one in chain order
// whose UcodeOffset is not above the offset; statements without a code offset take no part. The
// index is a snapshot of the code nodes: a caller makes it anew after it changes them.
struct tVemCodeIndex;

struct tVemCodeHit {
    int Failure;               // one of the kVemCode values below; kVemCodeFound on success
    CEVemBaseNode* CodeNode;   // the unit's code node
    CEVemBaseNode* Statement;  // the statement whose code covers the offset
    const char* UnitPath;      // path name of the code node
    u16 UcodeOffset;           // the statement's code offset
    u16 AwlLine;               // its source line
    i32 Type;                  // its tEVemNodeType
    const char* TypeText;      // the kind's text of the dumps, trailing blanks dropped
    const char* Operand;       // its name: the operand, or the unit that it calls; may be empty
    u32 CodeLength;            // length of the unit's code segment, 0 if unknown
};

enum : int {
    kVemCodeFound = 0,
    kVemCodeNoModel = 1,     // the statement model is switched off
    kVemCodeNoUnit = 2,      // no unit has that name, path or code segment
    kVemCodeNoCodeNode = 3,  // the unit is there but has no code node
    kVemCodeBeyond = 4,      // the offset lies beyond the unit's code segment
    kVemCodeBefore = 5,      // the offset lies before the unit's first statement
};

extern "C" {
// Null for a node that is no executable node. With the statement model switched off the index is
// made, and every lookup answers kVemCodeNoModel.
VEM_API tVemCodeIndex* VemCodeIndexNew(CVemBaseNode* exe);
VEM_API void VemCodeIndexDelete(tVemCodeIndex* index);  // null is accepted
// The unit by its path name, its name, or the file name of its path without the extension, in any
// case. 1 found, 0 not (hit->Failure says why). Texts are valid as long as the index.
VEM_API int VemCodeLookup(tVemCodeIndex* index, const char* unit, u32 offset, tVemCodeHit* hit);
// The unit by its code segment, as VemGetPouPathNameFromCodeSegNr of the node answers it (the
// executable node when node is null, which knows the units of "Global - Resource").
VEM_API int VemCodeLookupSegment(tVemCodeIndex* index, CVemBaseNode* node, u16 codeSegment, u32 offset,
                                 tVemCodeHit* hit);
}

// Layout diff of two compile results of a resource (old A, new B): per compiled task the variables
// added, removed or changed, the units whose code changed, the segment tables and the device
// settings, and a verdict on keeping the data of a controller that runs A when B replaces it.
struct tVemLayoutDiff;

enum : int {
    kVemDiffVarAdded = 1,
    kVemDiffVarRemoved = 2,
    kVemDiffVarChanged = 3,  // Changes says how
    kVemDiffTaskAdded = 4,
    kVemDiffTaskRemoved = 5,
    kVemDiffCodeChanged = 6,     // a unit's code segment differs in length or checksum
    kVemDiffSegmentChanged = 7,  // a segment of a task's table was added, removed or changed length
    kVemDiffSettingChanged = 8,  // a device setting; Path is its name
    kVemDiffResource = 9,        // the two are compiled forms of different resources
};
enum : int { kVemDiffMoved = 1, kVemDiffResized = 2, kVemDiffRetyped = 4 };
enum : int { kVemDiffEqual = 0, kVemDiffCompatible = 1, kVemDiffReinit = 2, kVemDiffIncompatible = 3 };

struct tVemDiffEntry {
    int Kind;          // kVemDiff...
    int Changes;       // bits of kVemDiffMoved, kVemDiffResized, kVemDiffRetyped
    const char* Task;  // name of the compiled task, empty for settings and the resource
    const char* Path;  // path of the variable, path name of the unit, number of the segment, name of the setting
    u16 OldSegment, OldOffset, OldSize;
    u16 NewSegment, NewOffset, NewSize;
    u32 OldType, NewType;  // tCbeType of a variable
    const char* OldText;   // type name of a variable, value of a setting, length:checksum of code
    const char* NewText;
};

extern "C" {
// Null if either node is no executable node.
VEM_API tVemLayoutDiff* VemDiffNew(CVemBaseNode* oldExe, CVemBaseNode* newExe);
// Loads both node files (with their task files) and compares them; null if a load fails.
VEM_API tVemLayoutDiff* VemDiffFiles(const char* oldFile, const char* newFile);
VEM_API void VemDiffDelete(tVemLayoutDiff* diff);  // null is accepted
VEM_API int VemDiffCount(tVemLayoutDiff* diff);
// 1 and the entry, or 0 for an index outside the diff. Texts are valid as long as the diff.
VEM_API int VemDiffGetEntry(tVemLayoutDiff* diff, int index, tVemDiffEntry* entry);
// kVemDiffEqual, kVemDiffCompatible (every surviving variable keeps its place), kVemDiffReinit
// (the changed variables must be initialised again) or kVemDiffIncompatible.
VEM_API int VemDiffVerdict(tVemLayoutDiff* diff);
// Why the verdict is what it is, in one line; for different resources also what was compared.
VEM_API const char* VemDiffReason(tVemLayoutDiff* diff);
}
