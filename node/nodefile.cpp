// Loading and writing node files, and nodes as objects in a caller's archive.
#include "node/nodefile.h"

#include <cstring>
#include <new>

#include "vem_node.h"
#include "vem_plain.h"

const char kVemRebuildMessage[] =
    "\nError while loading the current project. Please rebuild it."
    "\r\nFehler beim Laden des aktuellen Projekts. Bitte \xFC"
    "bersetzen sie es neu.";

const char kVemOutdatedMessage[] =
    "\nPlease rebuild the current project, because it was build with an out of date compiler version!"
    "\r\nLe projet actuel a TtT compilT avec une vieille version du compilateur. Veuillez le retraduire!"
    "\r\nBitte nbersetzen sie das aktuelle Projekt neu, da es mit einer veralteten Compilerversion erstellt "
    "wurde!";

namespace {

void CheckStamp(CArchive& ar) {
    char stamp[kVemVersionStampLength];
    ar.EnsureRead(stamp, kVemVersionStampLength);
    // The stamp compares as a zero-terminated text: a 25th byte other than zero differs too.
    if (std::memcmp(stamp, kVemVersionStamp, kVemVersionStampLength) != 0) {
        VemThrowArchive(CArchiveException::badIndex);
    }
}

// What the load does with a failure: delete what was read, tell the user where the platform would.
CVemBaseNode* FailedLoad(CVemBaseNode* node, const char* message) {
    delete node;
    if (message) AfxMessageBox(message);
    return nullptr;
}

}  // namespace

CVemBaseNode* VemLoadNode(const CString& fileName) {
    CFile file;
    if (!file.Open(fileName, CFile::modeRead | CFile::shareDenyWrite | CFile::typeBinary)) return nullptr;
    CVemBaseNode* node = nullptr;
    try {
        CArchive ar(&file, CArchive::load);
        u16 type;
        ar >> type;
        node = VemNewNodeForLoad(type);
        CheckStamp(ar);
        node->Serialize(ar);
        ar.Close();
        file.Close();
        return node;
    } catch (const CFileException& e) {
        if (e.m_cause == CFileException::none) return node;
        return FailedLoad(node, e.GetErrorMessage());
    } catch (const CArchiveException& e) {
        if (e.m_cause == CArchiveException::none) return node;
        return FailedLoad(node, nullptr);
    } catch (const CException&) {
        return FailedLoad(node, kVemRebuildMessage);
    } catch (const std::bad_alloc&) {
        return FailedLoad(node, kVemRebuildMessage);
    }
}

CVemBaseNode* VemLoadNode(tVemNodeType, const CString& fileName) { return VemLoadNode(fileName); }

extern "C" CVemBaseNode* VemLoadNodeEx(tVemNodeType type, const CString& fileName) {
    return VemLoadNode(type, fileName);
}

// The file is written beside the target and renamed over it, so a failed write leaves the
// previous node file whole.
int VemWriteNode(CVemBaseNode* node, const CString& fileName) {
    CVemReplaceFile file;
    if (!file.OpenReplace(fileName)) return 0;
    try {
        CArchive ar(&file, CArchive::store);
        ar << static_cast<u16>(node->GetNodeType());
        ar.Write(kVemVersionStamp, kVemVersionStampLength);
        node->Serialize(ar);
        ar.Close();
        file.Commit();
        return 1;
    } catch (const CFileException&) {
        return 0;
    } catch (const CArchiveException&) {
        return 0;
    }
}

void VemSerialize(CVemBaseNode* node, CArchive& ar) {
    node->Serialize(ar);
    if (ar.IsStoring()) {
        ar.Write(kVemVersionStamp, kVemVersionStampLength);
    } else {
        CheckStamp(ar);
    }
}

int VemWriteObject(CVemBaseNode* node, CArchive& ar) {
    try {
        ar.WriteObject(node);
        return 1;
    } catch (const CFileException&) {
        return 0;
    } catch (const CArchiveException&) {
        return 0;
    }
}

CVemBaseNode* VemReadObject(CArchive& ar) {
    try {
        return static_cast<CVemBaseNode*>(ar.ReadObject(RUNTIME_CLASS(CVemBaseNode)));
    } catch (const CFileException&) {
        return nullptr;
    } catch (const CArchiveException&) {
        return nullptr;
    }
}

int VemGetIpType(const CString& fileName, u8* ipType) {
    CVemBaseNode* root = VemLoadNode(fileName);
    if (!root) return 0;
    int result = 0;
    if (root->GetNodeType() == kVemExeNode) {
        if (const tVemDeviceSettings* settings = root->GetDeviceSettings()) {
            *ipType = settings->IpType;
            result = 1;
        }
    }
    delete root;
    return result;
}
