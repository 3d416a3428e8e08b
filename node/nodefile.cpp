// Loading and writing node files, and nodes as objects in a caller's archive.
#include "node/nodefile.h"

#include <cstring>
#include <memory>
#include <new>

#include "platform/msgbox.h"
#include "vem_ext.h"
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

void CopyField(char* to, std::size_t size, const char* text) {
    std::strncpy(to, text ? text : "", size - 1);
    to[size - 1] = '\0';
}

// The report's text field has a fixed size; the whole text goes to `message` where one is given.
void Report(tVemLoadReport& report, int failure, int cause, const CArchive* ar, const CString& message,
            CString* wholeMessage) {
    if (wholeMessage) *wholeMessage = message;
    report.Failure = failure;
    report.Cause = cause;
    report.Offset = ar ? ar->GetPosition() : 0;
    CopyField(report.RecordClass, sizeof report.RecordClass, ar ? ar->GetRecordClass() : "");
    CopyField(report.Message, sizeof report.Message, message);
}

// The load of a node file. On failure the partly read tree is deleted, the report says why, and
// the result is null; an exception whose cause is "none" keeps what stands.
CVemBaseNode* LoadNodeFile(const char* fileName, tVemLoadReport& report, CString* message = nullptr) {
    report = tVemLoadReport{};
    CFile file;
    try {
        CFileException openError;
        if (!file.Open(fileName, CFile::modeRead | CFile::shareDenyWrite | CFile::typeBinary, &openError)) {
            Report(report, tVemLoadReport::kCannotOpen, openError.m_cause, nullptr, openError.GetErrorMessage(),
                   message);
            return nullptr;
        }
    } catch (const std::bad_alloc&) {  // the names of the file
        report.Failure = tVemLoadReport::kMemory;
        return nullptr;
    }
    CVemBaseNode* node = nullptr;
    std::unique_ptr<CArchive> ar;
    try {
        ar = std::make_unique<CArchive>(&file, CArchive::load);
        const vem::load::TaskFileScope taskFiles(ar->LoadContext());  // each task file once in the whole tree
        u16 type;
        *ar >> type;
        node = vem::nodetypes::NewForLoad(type);
        CheckStamp(*ar);
        {
            CArchive::RecordScope record(*ar, node->GetRuntimeClass()->m_lpszClassName);
            node->Serialize(*ar);
            vem::nodetypes::CheckStoredType(node);
            record.Leave();
        }
        ar->Close();
        file.Close();
        return node;
    } catch (const CFileException& e) {
        if (e.m_cause == CFileException::none) return node;
        Report(report, tVemLoadReport::kFileException, e.m_cause, ar.get(), e.GetErrorMessage(), message);
    } catch (const CArchiveException& e) {
        if (e.m_cause == CArchiveException::none) return node;
        Report(report, tVemLoadReport::kArchiveException, e.m_cause, ar.get(), e.GetErrorMessage(), message);
    } catch (const CMemoryException& e) {
        Report(report, tVemLoadReport::kMemory, 0, ar.get(), e.GetErrorMessage(), message);
    } catch (const CException& e) {
        Report(report, tVemLoadReport::kOther, 0, ar.get(), e.GetErrorMessage(), message);
    } catch (const std::bad_alloc&) {
        Report(report, tVemLoadReport::kMemory, 0, ar.get(), "Out of memory.", message);
    }
    delete node;
    return nullptr;
}

}  // namespace

CVemBaseNode* VemLoadNodeReport(const char* fileName, tVemLoadReport* report) {
    tVemLoadReport local;
    return LoadNodeFile(fileName, report ? *report : local);
}

// A file exception shows the platform's report of it; a shortage of memory or another exception
// of the platform shows the request to rebuild; archive exceptions show nothing.
CVemBaseNode* VemLoadNode(const CString& fileName) {
    tVemLoadReport report;
    CString message;
    CVemBaseNode* node = LoadNodeFile(fileName, report, &message);
    try {
        switch (report.Failure) {
            case tVemLoadReport::kFileException: AfxMessageBox(message); break;
            case tVemLoadReport::kMemory:
            case tVemLoadReport::kOther: AfxMessageBox(kVemRebuildMessage); break;
            default: break;
        }
    } catch (const std::bad_alloc&) {
        // the box could not be shown; the load has failed all the same
    }
    return node;
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
