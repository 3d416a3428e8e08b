// Helpers of the compiled task and the executable node.
#include "project/compiled.h"

#include <cstring>
#include <memory>

#include "download/download.h"
#include "node/layoutepoch.h"
#include "vem_bytearray.h"

namespace {

// Growth step of a table of absolute offsets.
constexpr int kOffsetsGrowBy = 20;

}  // namespace

u16 vem::AppendSegmentLength(CDWordArray& offsets, u16 length) {
    vem::TouchLayout();
    if (offsets.IsEmpty()) {
        offsets.SetSize(0, kOffsetsGrowBy);
        offsets.Add(0);
        offsets.Add(0);
        offsets.Add(length);
        return length;
    }
    const u16 start = static_cast<u16>(static_cast<u16>(offsets.GetAt(offsets.GetUpperBound())) + length);
    offsets.Add(start);
    return start;
}

CString vem::DataContainerDumpText(CVemDataContainer& container, const CString& prefix) {
    const CString nl = vem::DumpNewLine(prefix);
    CString text = prefix + "======== Datacontainer ========= ";
    if (container.IsEmpty()) {
        text += nl + "No Datacontainermembers found !! " + "\n";
    } else {
        CStringList keys;
        container.GetFileList(&keys);
        for (POSITION pos = keys.GetHeadPosition(); pos;) {
            const CString& key = keys.GetNext(pos);
            text += nl;
            text.AppendFormat("File: %s -> Filetype: %u, Checksum: %u", key.GetString(), container.GetType(key),
                              container.GetCheckSum(key));
        }
    }
    text += nl + kVemDumpRule;
    return text;
}

void vem::SkipDownloadList(CArchive& ar) {
    CVemDownloadList dropped;
    dropped.Serialize(ar);
}

void vem::SkipByteBuffer(CArchive& ar) {
    CVemByteArray* dropped = nullptr;
    VemBaSerialize(dropped, ar);
    delete dropped;
}

CString vem::UnitPathInChildren(CVemBaseNode* parent, u16 codeSegment) {
    for (POSITION pos = parent->Children.GetHeadPosition(); pos;) {
        CVemBaseNode* child = parent->ChildAt(pos);
        CString path;
        if (child->GetNodeType() == kVemFbNode) {
            path = child->GetCodeSegment() == codeSegment ? child->GetPathName()
                                                          : child->GetPouPathNameFromCodeSegNr(codeSegment);
        } else if (child->GetNodeType() == kVemFunctionNode && child->GetCodeSegment() == codeSegment) {
            path = child->GetPathName();
        }
        if (!path.IsEmpty()) return path;
    }
    return CString();
}
