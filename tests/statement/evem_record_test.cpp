// Records of the statement model: the code node's chain, the three statement forms, the older
// nested form, objects, and records that cannot be read.
#include <functional>

#include "alloc_hook.h"
#include "evem_test_util.h"
#include "statement/evemlist.h"

using evemtest::ChainTypes;
using evemtest::Create;
using evemtest::DumpText;
using evemtest::EVemTest;
using evemtest::LoadRecord;
using evemtest::NodePtr;
using evemtest::StoreRecord;
using vemtest::Bytes;

namespace {

// A code node with PouType 1, LocalDataSegSize 4, path "U", and one statement of kind 8 in line 5
// at code offset 0x20, named "x", near offset 2, far offset 0, address mode 1.
std::vector<u8> ExampleCodeNodeRecord() {
    Bytes b;
    b.u16_(3).u16_(3);             // base record: schema word, NodeType 3
    b.u16_(3);                     // schema word of the code node
    b.u16_(1);                     // PouType
    b.u16_(4);                     // LocalDataSegSize
    b.str("U");                    // PouPathName
    b.u16_(8);                     // kind of the statement that follows
    b.u16_(3).u16_(8);             // its base record: schema word, NodeType
    b.u16_(3).u16_(5).u16_(0x20);  // statement part: schema word, AwlLine, UcodeOffset
    b.u16_(3);                     // schema word of the variable part
    b.str("x");                    // Name
    b.u16_(2).u16_(0).u16_(1);     // NearOffset, FarOffset, AddressMode
    b.u16_(0);                     // end of the chain
    return b.v;
}

NodePtr ExampleCodeNode() {
    NodePtr code = Create(kEVemPouCodeNode, "Unit");
    EVemSetPouType(code.get(), kEVemPouProg);
    EVemSetDataSegSize(code.get(), 4);
    EVemSetPathName(code.get(), "U");
    CEVemBaseNode* s = EVemAddNewStmtNode(code.get(), kEVemLdVariableStmtNode);
    EVemSetAwlLine(s, 5);
    EVemSetUcodeOffset(s, 0x20);
    EVemSetName(s, "x");
    EVemSetOffset(s, 2);
    EVemSetFarOffset(s, 0);
    EVemSetAddressMode(s, kEVemNearAddress);
    return code;
}

// A list of code nodes as the compiled task and the executable node hold it in their records.
std::vector<u8> ListRecord(const std::vector<std::vector<u8>>& records) {
    Bytes b;
    b.u16_(static_cast<unsigned>(records.size()));
    for (const auto& r : records) b.raw(r);
    return b.v;
}

void LoadList(const std::vector<u8>& bytes, CObList& list) {
    CMemFile file(bytes);
    CArchive ar(&file, CArchive::load);
    vem::evem::SerializeRootList(ar, list);
}

// A code node record with path "U" around the given statement records.
std::vector<u8> CodeNodeAround(const std::vector<u8>& statements) {
    Bytes b;
    b.u16_(3).u16_(3).u16_(3).u16_(1).u16_(0).str("U");
    b.raw(statements);
    b.u16_(0);
    return b.v;
}

// Head of a statement record of version 2: base record, schema word, AwlLine, kind of the next.
Bytes& OldHead(Bytes& b, unsigned type, unsigned line, unsigned nextType) {
    return b.u16_(3).u16_(type).u16_(2).u16_(line).u16_(nextType);
}

// The record of a code node with path "U" and no statements.
std::vector<u8> EmptyCodeNodeRecord() { return Bytes().u16_(3).u16_(3).u16_(3).u16_(0).u16_(0).u8_(0).u16_(0).v; }

std::vector<u8> WriteObject(CEVemBaseNode* node) {
    CMemFile file;
    CArchive ar(&file, CArchive::store);
    EXPECT_EQ(EVemWriteObject(node, ar), 1);
    ar.Close();
    return file.Data();
}

std::string UcodeLine(CEVemBaseNode* s) {
    const std::string dump = DumpText(s, "");
    const auto at = dump.find("UCODE Offset = ");
    return dump.substr(at, dump.find('\n', at) - at);
}

}  // namespace

TEST_F(EVemTest, CodeNodeRecordIsTheExampleAndLoadsBackWithItsChain) {
    EXPECT_EQ(StoreRecord(ExampleCodeNode().get()), ExampleCodeNodeRecord());
    NodePtr code = LoadRecord(ExampleCodeNodeRecord(), kEVemPouCodeNode);
    EXPECT_EQ(EVemGetName(code.get()), "");  // the unit's name is not stored
    EXPECT_EQ(EVemGetPathName(code.get()), "U");
    EXPECT_EQ(EVemGetPouType(code.get()), kEVemPouProg);
    EXPECT_EQ(EVemGetDataSegSize(code.get()), 4);
    CEVemBaseNode* s = EVemGetStatementNode(code.get());
    EXPECT_EQ(ChainTypes(s), std::vector<int>{8});
    EXPECT_EQ(EVemGetPrevious(s), nullptr);
    EXPECT_EQ(EVemGetAwlLine(s), 5);
    EXPECT_EQ(UcodeLine(s), "UCODE Offset = 32");
    EXPECT_EQ(EVemGetName(s), "x");
    EXPECT_EQ(EVemGetOffset(s), 2);
    EXPECT_EQ(EVemGetFarOffset(s), 0);
    EXPECT_EQ(EVemGetAddressMode(s), kEVemNearAddress);
    EXPECT_EQ(StoreRecord(code.get()), ExampleCodeNodeRecord());
}

TEST_F(EVemTest, ConstantAndPlainStatementRecordsAreTenBytes) {
    NodePtr constant = Create(kEVemLdConstStmtNode);
    NodePtr plain = Create(kEVemNotStmtNode);
    CVemByteArray value;
    value.AppendDword(7);
    EVemSetValue(constant.get(), &value);
    EVemSetCbeType(constant.get(), kCbeTypeDint);
    EXPECT_EQ(StoreRecord(constant.get()).size(), 10u);
    EXPECT_EQ(StoreRecord(plain.get()),
              (Bytes().u16_(3).u16_(38).u16_(3).u16_(0).u16_(0xCDCD).v));  // base, schema, line, offset
}

TEST_F(EVemTest, LabelRecordHoldsNameTypeNameOffsetAndNumber) {
    NodePtr label = Create(kEVemCalFbStmtNode, "Inst");
    EVemSetTypeName(label.get(), "FB");
    EVemSetOffset(label.get(), 0x102);
    EVemSetLabelNum(label.get(), 3);
    EVemSetAwlLine(label.get(), 9);
    EVemSetUcodeOffset(label.get(), 0x40);
    const std::vector<u8> record = StoreRecord(label.get());
    Bytes expected;
    expected.u16_(3).u16_(120);              // base record
    expected.u16_(3).u16_(9).u16_(0x40);     // statement part
    expected.u16_(3).str("Inst").str("FB");  // label part: schema, Name, TypeName
    expected.u16_(0x102).u16_(3);            // Offset, LabelNum
    EXPECT_EQ(record, expected.v);
    NodePtr loaded = LoadRecord(record, kEVemCalFbStmtNode);
    EXPECT_EQ(EVemGetName(loaded.get()), "Inst");
    EXPECT_EQ(EVemGetTypeName(loaded.get()), "FB");
    EXPECT_EQ(EVemGetOffset(loaded.get()), 0x102);
    EXPECT_EQ(EVemGetLabelNum(loaded.get()), 3);
    EXPECT_EQ(EVemGetVemNode(loaded.get()), nullptr);
}

// A loaded statement dumps like a new one that has only its stored fields set.
TEST_F(EVemTest, StoreAndLoadLoseWhatIsNotStored) {
    auto* borrowed = reinterpret_cast<CVemBaseNode*>(0x1000);  // only kept, never touched
    auto expectLikeNew = [](CEVemBaseNode* node, const std::function<void(CEVemBaseNode*)>& setStored) {
        NodePtr loaded = LoadRecord(StoreRecord(node), static_cast<tEVemNodeType>(EVemGetNodeType(node)));
        NodePtr fresh = Create(static_cast<tEVemNodeType>(EVemGetNodeType(node)));
        setStored(fresh.get());
        EXPECT_EQ(DumpText(loaded.get(), ""), DumpText(fresh.get(), ""));
        return loaded;
    };
    CVemByteArray value;
    value.AppendWord(5);
    NodePtr constant = Create(kEVemLdConstStmtNode);
    EVemSetAwlPosition(constant.get(), 12, 3);  // the column is not stored
    EVemSetValue(constant.get(), &value);
    EVemSetCbeType(constant.get(), kCbeTypeInt);
    EVemSetNegOperand(constant.get(), 1);
    EVemSetAccuType(constant.get(), 1);
    NodePtr c = expectLikeNew(constant.get(), [](CEVemBaseNode* n) { EVemSetAwlLine(n, 12); });
    EXPECT_EQ(EVemGetValue(c.get()), nullptr);

    NodePtr array = Create(kEVemLdIndexedVarStmtNode);
    EVemSetName(array.get(), "a");
    EVemSetVemNode(array.get(), borrowed);
    EVemSetInstanceNode(array.get(), borrowed);
    EVemSetElementNode(array.get(), borrowed);
    EVemAddIndexNode(array.get(), EVemCreateNode(kEVemLdConstStmtNode, ""));
    EVemAddIndexNode(array.get(), EVemCreateNode(kEVemLdConstStmtNode, ""));
    EVemSetPrevOperandNode(array.get(), EVemCreateNode(kEVemLdVariableStmtNode, ""));
    NodePtr a = expectLikeNew(array.get(), [](CEVemBaseNode* n) { EVemSetName(n, "a"); });
    EXPECT_THROW(EVemGetIndexNode(a.get(), 0), CInvalidArgException);
    EXPECT_EQ(EVemGetPrevOperandNode(a.get()), nullptr);
    EXPECT_EQ(EVemGetAddressMode(a.get()), kEVemNoAddressMode);  // 4 goes through as it is

    NodePtr ref = Create(kEVemLdRefStmtNode);
    EVemSetOffset(ref.get(), 8);
    EVemSetFarOffset(ref.get(), 9);
    EVemSetVemNode(ref.get(), borrowed);
    expectLikeNew(ref.get(), [](CEVemBaseNode*) {});

    NodePtr conv = Create(kEVemTruncStmtNode);
    EVemSetInType(conv.get(), kCbeTypeReal);
    EVemSetOutType(conv.get(), kCbeTypeInt);
    expectLikeNew(conv.get(), [](CEVemBaseNode*) {});

    NodePtr replace = Create(kEVemStdStringReplaceStmtNode);
    EVemSetStdStringPParamStmtNode(replace.get(), EVemCreateNode(kEVemLdConstStmtNode, ""));
    EVemSetStdStringLParamStmtNode(replace.get(), EVemCreateNode(kEVemLdConstStmtNode, ""));
    EVemSetStdStringIn2ParamStmtNode(replace.get(), EVemCreateNode(kEVemLdConstStmtNode, ""));
    expectLikeNew(replace.get(), [](CEVemBaseNode*) {});
}

TEST_F(EVemTest, OlderRecordWithANestedChainLoadsAsAChain) {
    Bytes s;
    OldHead(s, 8, 1, 38);                                   // LD x, then a NOT inside it
    OldHead(s, 38, 2, 10);                                  //   NOT, then an ST y inside it
    OldHead(s, 10, 3, 0);                                   //     ST y, the end of the chain
    s.u16_(0x30).u16_(3).str("y").u16_(4).u16_(0).u16_(1);  //     its offset and variable part
    s.u16_(0x20);                                           //   offset of the NOT
    s.u16_(0x10).u16_(3).str("x").u16_(2).u16_(0).u16_(1);  // offset and variable part of LD x
    const std::vector<u8> record = CodeNodeAround(Bytes().u16_(8).raw(s.v).v);
    NodePtr code = LoadRecord(record, kEVemPouCodeNode);
    CEVemBaseNode* first = EVemGetStatementNode(code.get());
    ASSERT_EQ(ChainTypes(first), (std::vector<int>{8, 38, 10}));
    CEVemBaseNode* second = EVemGetNext(first);
    CEVemBaseNode* third = EVemGetNext(second);
    EXPECT_EQ(EVemGetPrevious(second), first);
    EXPECT_EQ(EVemGetPrevious(third), second);
    EXPECT_EQ(EVemGetName(first), "x");
    EXPECT_EQ(EVemGetName(third), "y");
    EXPECT_EQ(EVemGetOffset(third), 4);
    EXPECT_EQ(EVemGetAwlLine(second), 2);
    EXPECT_EQ(UcodeLine(first), "UCODE Offset = 16");
    EXPECT_EQ(UcodeLine(second), "UCODE Offset = 32");
    EXPECT_EQ(UcodeLine(third), "UCODE Offset = 48");
    // Storing writes the current form, which loads to the same chain.
    NodePtr again = LoadRecord(StoreRecord(code.get()), kEVemPouCodeNode);
    EXPECT_EQ(ChainTypes(EVemGetStatementNode(again.get())), (std::vector<int>{8, 38, 10}));
    // An older record without a next is a single statement.
    Bytes one;
    OldHead(one, 38, 7, 0).u16_(0x11);
    NodePtr single = LoadRecord(one.v, kEVemNotStmtNode);
    EXPECT_EQ(EVemGetNext(single.get()), nullptr);
    EXPECT_EQ(EVemGetAwlLine(single.get()), 7);
    EXPECT_EQ(UcodeLine(single.get()), "UCODE Offset = 17");
}

TEST_F(EVemTest, LongChainLoadsAndGoesWithoutDeepCalls) {
    constexpr int kLength = 100000;
    const long live = CEVemBaseNode::LiveCount();
    {
        NodePtr code = Create(kEVemPouCodeNode, "U");
        for (int i = 0; i < kLength; ++i) EVemAddNewStmtNode(code.get(), kEVemNotStmtNode);
        NodePtr loaded = LoadRecord(StoreRecord(code.get()), kEVemPouCodeNode);
        EXPECT_EQ(ChainTypes(EVemGetStatementNode(loaded.get())).size(), static_cast<std::size_t>(kLength));
    }
    EXPECT_EQ(CEVemBaseNode::LiveCount(), live);
}

TEST_F(EVemTest, DeeplyNestedOlderChainLoadsWithoutDeepCalls) {
    constexpr unsigned kDepth = 100000;
    Bytes s;
    s.u16_(38);
    for (unsigned i = 0; i < kDepth; ++i) OldHead(s, 38, i & 0xFFFF, i + 1 < kDepth ? 38 : 0);
    for (unsigned i = kDepth; i-- > 0;) s.u16_(i & 0xFFFF);  // offsets, deepest first: each its line
    NodePtr code = LoadRecord(CodeNodeAround(s.v), kEVemPouCodeNode);
    CEVemBaseNode* first = EVemGetStatementNode(code.get());
    CEVemBaseNode* last = first;
    std::size_t length = 1;
    for (; EVemGetNext(last); ++length) last = EVemGetNext(last);
    EXPECT_EQ(length, kDepth);
    EXPECT_EQ(UcodeLine(first), "UCODE Offset = 0");
    EXPECT_EQ(EVemGetAwlLine(last), (kDepth - 1) & 0xFFFF);
    EXPECT_EQ(UcodeLine(last), "UCODE Offset = " + std::to_string((kDepth - 1) & 0xFFFF));
}

TEST_F(EVemTest, UnknownStatementKindInARecordRaisesTheUserException) {
    const long live = CEVemBaseNode::LiveCount();
    const std::vector<u8> good = Bytes().u16_(3).u16_(38).u16_(3).u16_(1).u16_(2).v;
    for (unsigned kind : {0x83u, 200u, 3u, 5u, 1u}) {  // 131 has no class; 3 is no statement
        CObList list;
        const std::vector<u8> chain = Bytes().u16_(38).raw(good).u16_(kind).raw(good).v;
        EXPECT_THROW(LoadList(ListRecord({CodeNodeAround(chain)}), list), CUserException) << kind;
        EXPECT_TRUE(list.IsEmpty());
    }
    Bytes nested;  // the unknown kind inside an older record
    OldHead(nested, 38, 1, 38);
    OldHead(nested, 38, 2, 131);
    CObList list;
    EXPECT_THROW(LoadList(ListRecord({CodeNodeAround(Bytes().u16_(38).raw(nested.v).v)}), list), CUserException);
    EXPECT_EQ(CEVemBaseNode::LiveCount(), live);
}

// The second code node has no statements: its chain is only the terminator.
TEST_F(EVemTest, ListOfCodeNodesIsACountAndTheRecords) {
    CObList list;
    list.AddTail(ExampleCodeNode().release());
    list.AddTail(Create(kEVemPouCodeNode, "Other").release());
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store);
        vem::evem::SerializeRootList(ar, list);
        ar.Close();
    }
    EXPECT_EQ(file.Data(), ListRecord({ExampleCodeNodeRecord(), EmptyCodeNodeRecord()}));
    vem::evem::DeleteRootList(list);
    LoadList(file.Data(), list);
    ASSERT_EQ(list.GetCount(), 2);
    auto* first = static_cast<CEVemBaseNode*>(list.GetHead());
    EXPECT_EQ(EVemGetPathName(first), "U");
    EXPECT_EQ(ChainTypes(EVemGetStatementNode(first)), std::vector<int>{8});
    EXPECT_EQ(EVemGetStatementNode(static_cast<CEVemBaseNode*>(list.GetTail())), nullptr);  // an empty chain
    vem::evem::DeleteRootList(list);
    EXPECT_TRUE(list.IsEmpty());
}

TEST_F(EVemTest, ObjectFormHoldsTheClassNameAndSchemaFive) {
    const std::vector<u8> object = WriteObject(ExampleCodeNode().get());
    EXPECT_EQ(object, Bytes().newClass(5, "CEVemPouCodeNode").raw(ExampleCodeNodeRecord()).v);
    CMemFile in(object);
    CArchive ar(&in, CArchive::load);
    NodePtr loaded(EVemReadObject(ar));
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(EVemGetNodeType(loaded.get()), kEVemPouCodeNode);
    EXPECT_EQ(ChainTypes(EVemGetStatementNode(loaded.get())), std::vector<int>{8});
}

TEST_F(EVemTest, ObjectFunctionsActOnlyWhenTheSettingIsExactlyOne) {
    NodePtr code = ExampleCodeNode();
    for (i32 setting : {0, 2, -1}) {
        LurSetEvemEnabled(setting);
        EXPECT_TRUE(WriteObject(code.get()).empty()) << setting;
        CMemFile in(std::vector<u8>{0xFF, 0xFF});
        CArchive ar(&in, CArchive::load);
        EXPECT_EQ(EVemReadObject(ar), nullptr) << setting;
        EXPECT_EQ(ar.GetRemaining(), 2u) << setting;
    }
}

TEST_F(EVemTest, ObjectOfAnotherClassOrCutShortReadsAsNull) {
    const long live = CEVemBaseNode::LiveCount();
    CMemFile in(Bytes().newClass(5, "CObList").u16_(0).v);
    CArchive ar(&in, CArchive::load);
    EXPECT_EQ(EVemReadObject(ar), nullptr);
    const std::vector<u8> whole = WriteObject(ExampleCodeNode().get());
    for (std::size_t length = 0; length < whole.size(); ++length) {
        CMemFile cut(std::vector<u8>(whole.begin(), whole.begin() + static_cast<long>(length)));
        CArchive cutAr(&cut, CArchive::load);
        EXPECT_EQ(EVemReadObject(cutAr), nullptr) << length;
    }
    EXPECT_EQ(CEVemBaseNode::LiveCount(), live);
}
