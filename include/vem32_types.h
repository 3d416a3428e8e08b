// Types shared by the families of exported functions.
#pragma once

#include <cstddef>

#include "vem_base.h"

// The platform's classes that the flat functions take or give; vem32_classes.h defines them.
class CObject;
class CString;
class CObList;
class CStringList;
class CStringArray;
class CDWordArray;
class CWordArray;
class CMapStringToOb;
class CMapStringToString;
class CArchive;
class CFile;
class CDC;
class CBitmap;
class CVemBaseNode;
class CVemByteArray;
class CSegmentTable;
class CStatList;
class CVemDimRange;
class CEVemBaseNode;

// Points and rectangles of the tree view, by value.
struct CPoint {
    i32 x = 0;
    i32 y = 0;
    CPoint() = default;
    CPoint(i32 px, i32 py) : x(px), y(py) {}
    friend CPoint operator+(CPoint a, CPoint b) { return {a.x + b.x, a.y + b.y}; }
    friend CPoint operator-(CPoint a, CPoint b) { return {a.x - b.x, a.y - b.y}; }
    friend bool operator==(CPoint a, CPoint b) { return a.x == b.x && a.y == b.y; }
    friend bool operator!=(CPoint a, CPoint b) { return !(a == b); }
};
static_assert(sizeof(CPoint) == 8 && offsetof(CPoint, y) == 4);

struct CSize {
    i32 cx = 0;
    i32 cy = 0;
    CSize() = default;
    CSize(i32 w, i32 h) : cx(w), cy(h) {}
};
static_assert(sizeof(CSize) == 8 && offsetof(CSize, cy) == 4);

struct CRect {
    i32 left = 0;
    i32 top = 0;
    i32 right = 0;
    i32 bottom = 0;
    CRect() = default;
    CRect(i32 l, i32 t, i32 r, i32 b) : left(l), top(t), right(r), bottom(b) {}
    // Inclusive on all four edges, as the tree view's hit test wants it.
    bool ContainsInclusive(CPoint p) const { return p.x >= left && p.x <= right && p.y >= top && p.y <= bottom; }
    i32 Width() const { return right - left; }
    i32 Height() const { return bottom - top; }
    friend bool operator==(const CRect& a, const CRect& b) {
        return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
    }
};
static_assert(sizeof(CRect) == 16 && offsetof(CRect, top) == 4 && offsetof(CRect, right) == 8 &&
              offsetof(CRect, bottom) == 12);

// Kind of a node of the tree.
enum tVemNodeType : u32 {
#define VEM_NODE_TYPE(Value, Enumerator, ...) Enumerator = Value,
#include "vem_node_types.def"
#undef VEM_NODE_TYPE
};

// Data type of a variable or of a statement's operand.
enum tCbeType : u32 {
    kCbeTypeUndef = 0,
    kCbeTypeBool = 1,
    kCbeTypeByte = 2,
    kCbeTypeWord = 3,
    kCbeTypeDword = 4,
    kCbeTypeUsint = 5,
    kCbeTypeUint = 6,
    kCbeTypeUdint = 7,
    kCbeTypeSint = 8,
    kCbeTypeInt = 9,
    kCbeTypeDint = 10,
    kCbeTypeReal = 11,
    kCbeTypeTime = 12,
    kCbeTypeDate = 13,
    kCbeTypeTod = 14,
    kCbeTypeDt = 15,
    kCbeTypeLword = 16,
    kCbeTypeUlint = 17,
    kCbeTypeLint = 18,
    kCbeTypeLreal = 19,
    kCbeTypeString = 20,
    kCbeTypeEnum = 21,
    kCbeTypeArray = 22,
    kCbeTypeStruct = 23,
    kCbeTypeBit = 24,
    kCbeTypeBcdReal = 25,
    kCbeTypeReferenz = 26,
    kCbeTypeUser = 27,
    kCbeTypeArrayOfArray = 28,
    kCbeTypeArrayOfStruct = 29,
    kCbeTypeStructOfStruct = 30,
    kCbeTypeStructOfArray = 31,
    kCbeTypeInitvalues = 32,
    kCbeTypeFbInstance = 33,
    kCbeTypeInt24 = 34,
    kCbeTypeReal48 = 35,
    kCbeTypeAddress = 36,
    kCbeTypeWString = 37,
    kCbeTypeCount = 40,
};

// Scope of a variable as the compiler numbers it; the library tests only the value 8.
using tCbeVarScope = u32;
// Qualifiers of a variable; the library only keeps them.
using tVemVarQualifiers = u32;

// Kind of a segment: a byte in its header, and a number on variables and functions.
enum tIpSegmentKind : u32 {
    kIpSegCode = 0,
    kIpSegData = 1,
    kIpSegInit = 2,
    kIpSegSourceStart = 3,
    kIpSegSourceContinue = 4,
    kIpSegTaskDef = 5,
    kIpSegPiMask = 6,
    kIpSegNiMask = 7,
    kIpSegIoTableStart = 16,
    kIpSegIoTableContinue = 17,
    kIpSegIoComplexTableStart = 18,
    kIpSegIoComplexTableContinue = 19,
    kIpSegInstanceTableStart = 20,
    kIpSegInstanceTableContinue = 21,
    kIpSegDownloadTableStart = 22,
    kIpSegDownloadTableContinue = 23,
    kIpSegNativeCode = 24,
    kIpSegInitSecond = 25,
    kIpSegIo = 32,
    kIpSegIoInit = 33,
    kIpSegIoOld = 34,
    kIpSegParameter = 35,
    kIpSegHardwareConfig = 36,
    kIpSegOemVarInfoTable = 39,
    kIpSegByRefAccessInfo = 57,
    kIpSegInternPi = 128,
    kIpSegInternNi = 129,
    kIpSegInternNvMap = 130,
    kIpSegInternInstanceStack = 131,
    kIpSegInternAeStack = 132,
    kIpSegInternExtAeSegment = 133,
    kIpSegInternExtAes = 134,
    kIpSegInternAeTypeStack = 135,
};

// What a hit test of the tree view struck.
enum tTuiKlikedSymbol : int {
    kTuiKlikedExpandSymbol = 0,
    kTuiKlikedNode = 1,
};

// Result of VemAllTaskCompiledSuccesfully.
struct tCompiledTasks {
    i32 NoOfTasks;
    i32 NoOfCompiledTasks;
};
// The records below cross the library's boundary by address: a change of their layout breaks hosts.
static_assert(sizeof(tCompiledTasks) == 8 && offsetof(tCompiledTasks, NoOfCompiledTasks) == 4);

// One dimension of an array, as the flat functions pass it.
struct tVemDimRange {
    i32 LowBound;
    i32 HighBound;
    i32 CurrentIndex;
};
static_assert(sizeof(tVemDimRange) == 12 && offsetof(tVemDimRange, HighBound) == 4 &&
              offsetof(tVemDimRange, CurrentIndex) == 8);

// Two 16-bit halves; the first lies at the lower address.
struct tInstanceHandle {
    u16 First;
    u16 Second;
};
static_assert(sizeof(tInstanceHandle) == 4 && offsetof(tInstanceHandle, Second) == 2);

// Settings of the target device, held by the executable node.
struct tVemDeviceSettings {
    u16 DeviceWord1;
    u16 DeviceWord2;
    i32 MotorolaFormat;
    i32 ResourceGlobalSegTable;
    i32 OnlineLinking;
    i32 IncrementalDownload;
    i32 OneSegTableAtOnlineLinking;
    i32 OnlineEditor;
    i32 TaskDownload;
    i32 TaskStart;
    u16 MaxWatchEntries;
    u8 DeviceByte1;
    u8 DeviceByte2;
    u8 DeviceByte3;
    u8 DeviceByte4;
    u8 DeviceByte5;
    u8 DeviceByte6;
    u8 IpType;
    u16 DeviceWord3;
    u8 DeviceByte7;
    u8 Alignment;
    u8 ByteSize;
    u32 DeviceLong1;
    u8 DeviceByte9;
    u32 DeviceLong2;
    u32 DeviceLong3[2];
    u8 ReservedBytes[74];
};
static_assert(sizeof(tVemDeviceSettings) == 148);
static_assert(offsetof(tVemDeviceSettings, DeviceWord2) == 2 && offsetof(tVemDeviceSettings, MotorolaFormat) == 4 &&
              offsetof(tVemDeviceSettings, ResourceGlobalSegTable) == 8 &&
              offsetof(tVemDeviceSettings, OnlineLinking) == 12 &&
              offsetof(tVemDeviceSettings, IncrementalDownload) == 16 &&
              offsetof(tVemDeviceSettings, OneSegTableAtOnlineLinking) == 20 &&
              offsetof(tVemDeviceSettings, OnlineEditor) == 24 && offsetof(tVemDeviceSettings, TaskDownload) == 28 &&
              offsetof(tVemDeviceSettings, TaskStart) == 32 && offsetof(tVemDeviceSettings, MaxWatchEntries) == 36);
static_assert(offsetof(tVemDeviceSettings, DeviceByte1) == 38 && offsetof(tVemDeviceSettings, DeviceByte6) == 43 &&
              offsetof(tVemDeviceSettings, IpType) == 44 && offsetof(tVemDeviceSettings, DeviceWord3) == 46 &&
              offsetof(tVemDeviceSettings, DeviceByte7) == 48 && offsetof(tVemDeviceSettings, Alignment) == 49 &&
              offsetof(tVemDeviceSettings, ByteSize) == 50 && offsetof(tVemDeviceSettings, DeviceLong1) == 52 &&
              offsetof(tVemDeviceSettings, DeviceByte9) == 56 && offsetof(tVemDeviceSettings, DeviceLong2) == 60 &&
              offsetof(tVemDeviceSettings, DeviceLong3) == 64 && offsetof(tVemDeviceSettings, ReservedBytes) == 72);

// Statement model.
enum tEVemPouType : u32 {
    kEVemPouUndef = 0,
    kEVemPouProg = 1,
    kEVemPouFunction = 2,
    kEVemPouFunctionBlock = 3,
};

enum tEVemAddressMode : u32 {
    kEVemFarAddress = 0,
    kEVemNearAddress = 1,
    kEVemRefAddress = 2,
    kEVemIndAddress = 3,
    kEVemNoAddressMode = 4,
};

// 1 is the normal accumulator; every other value reads as the shadow one.
using tEVemAccuType = u32;
