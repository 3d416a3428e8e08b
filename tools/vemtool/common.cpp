#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

#include "host.h"
#include "tool.h"

namespace vemtool {

namespace {

// Results reach a file or pipe in large pieces; a terminal keeps its line buffering. The C library
// takes the size only with a buffer of the caller's (else it picks one of a few KiB); the buffers
// have no destructor, as the streams are flushed at the very end of the process.
constexpr std::size_t kOutputBuffer = std::size_t{1} << 17;
char gStdoutBuffer[kOutputBuffer];
char gFileBuffer[kOutputBuffer];
std::FILE* gOut = stdout;
std::string gOutName = "standard output";

double Now() {
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
}

// A write error of one stream, said once; true if the stream is whole.
bool Flushed(std::FILE* f, const std::string& name) {
    const bool failed = std::fflush(f) != 0 || std::ferror(f);
    if (failed) Error("cannot write %s: %s", name.c_str(), std::strerror(errno ? errno : EIO));
    return !failed;
}

// The pieces of a large result on their way to the output. The thread that makes them hands each
// full buffer over and takes an empty one back; a second thread writes them in turn. At most
// kBuffers are in play, so the maker waits when the writer falls behind. The writer neither makes
// nor frees a block: buffers only change hands.
class Spool {
public:
    explicit Spool(std::FILE* f) : f_(f), writer_([this] { WriteAll(); }) {}
    ~Spool() {
        if (writer_.joinable()) Finish();  // a process that ends early still writes what it made
    }
    Spool(const Spool&) = delete;
    Spool& operator=(const Spool&) = delete;

    std::FILE* stream() const { return f_; }

    void Hand(std::vector<char>& piece, std::size_t used) {
        std::unique_lock<std::mutex> lock(mutex_);
        const std::size_t size = piece.size();
        const int last = (first_ + queued_) % kBuffers;
        queue_[last] = std::move(piece);
        used_[last] = used;
        ++queued_;
        changed_.notify_all();
        if (!spares_ && made_ < kBuffers - 1) {
            ++made_;
            lock.unlock();
            piece.assign(size, 0);
            return;
        }
        changed_.wait(lock, [this] { return spares_ > 0; });
        piece = std::move(spare_[--spares_]);
        lock.unlock();
        if (piece.size() < size) piece.resize(size);
    }

    // Waits for the last piece; the error of the first write that failed, or 0.
    int Finish() {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            done_ = true;
        }
        changed_.notify_all();
        writer_.join();
        return error_;
    }

private:
    static constexpr int kBuffers = 4;

    void WriteAll() {
        std::unique_lock<std::mutex> lock(mutex_);
        for (;;) {
            changed_.wait(lock, [this] { return queued_ > 0 || done_; });
            if (!queued_) return;
            std::vector<char> piece = std::move(queue_[first_]);
            const std::size_t used = used_[first_];
            first_ = (first_ + 1) % kBuffers;
            --queued_;
            lock.unlock();
            // After a failed write the rest is not tried: the command fails at its end anyway.
            if (!error_ && used && std::fwrite(piece.data(), 1, used, f_) != used) error_ = errno ? errno : EIO;
            lock.lock();
            spare_[spares_++] = std::move(piece);
            changed_.notify_all();
        }
    }

    std::FILE* f_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<char> queue_[kBuffers];
    std::size_t used_[kBuffers] = {};
    int first_ = 0;
    int queued_ = 0;
    std::vector<char> spare_[kBuffers];
    int spares_ = 0;
    int made_ = 0;  // buffers the spool made; the maker brought one of its own
    bool done_ = false;
    int error_ = 0;       // the writer's alone until Finish has joined it
    std::thread writer_;  // last: it starts once everything above is made
};

std::unique_ptr<Spool> gSpool;

}  // namespace

void StartBulkOutput() {
    // The pieces are large already; the stream need not copy them once more.
    std::setvbuf(gOut, nullptr, _IONBF, 0);
    try {
        gSpool = std::make_unique<Spool>(gOut);
    } catch (const std::system_error&) {
        // No second thread to be had: the pieces are written where they are made.
    }
}

void WritePiece(std::FILE* f, std::vector<char>& piece, std::size_t used) {
    if (gSpool && gSpool->stream() == f)
        gSpool->Hand(piece, used);
    else if (used)
        std::fwrite(piece.data(), 1, used, f);
}

Run& State() {
    static Run run;
    return run;
}

std::string Options::Value(const std::string& name, const std::string& otherwise) const {
    const auto it = values_.find(name);
    return it == values_.end() || it->second.empty() ? otherwise : it->second.back();
}

const std::vector<std::string>& Options::Values(const std::string& name) const {
    static const std::vector<std::string> kNone;
    const auto it = values_.find(name);
    return it == values_.end() ? kNone : it->second;
}

void Error(const char* format, ...) {
    std::fputs("vemtool: ", stderr);
    va_list args;
    va_start(args, format);
    std::vfprintf(stderr, format, args);
    va_end(args);
    std::fputc('\n', stderr);
}

int Usage(const std::string& text) {
    Error("%s (see vemtool help %s)", text.c_str(), State().command.c_str());
    return kUsage;
}

std::FILE* Out() { return gOut; }

void BufferStandardOutput() {
    if (!StdoutIsTerminal()) std::setvbuf(stdout, gStdoutBuffer, _IOFBF, kOutputBuffer);
}

bool OpenOutput(const std::string& path) {
    if (path.empty() || path == "-") return true;
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (!f) {
        Error("cannot write %s: %s", path.c_str(), std::strerror(errno));
        return false;
    }
    gOut = f;
    gOutName = path;
    std::setvbuf(f, gFileBuffer, _IOFBF, kOutputBuffer);
    return true;
}

int FinishOutput(int result) {
    if (gSpool) {
        const int error = gSpool->Finish();
        gSpool.reset();
        if (error) errno = error;
    }
    bool whole = true;
    if (gOut != stdout) {
        whole = Flushed(gOut, gOutName);
        if (std::fclose(gOut) != 0 && whole) {
            Error("cannot write %s: %s", gOutName.c_str(), std::strerror(errno));
            whole = false;
        }
        gOut = stdout;
    }
    whole = Flushed(stdout, "standard output") && whole;
    return whole || result == kUsage ? result : kFailed;
}

// VEMTOOL_PROGRESS_DELAY (seconds, default 1) lets a test see progress without waiting for slow work.
static double ProgressDelay() {
    const char* text = std::getenv("VEMTOOL_PROGRESS_DELAY");
    return text && *text ? std::atof(text) : 1.0;
}

Progress::Progress(const char* what, std::size_t total)
    : what_(what), total_(total), start_(Now() - (1.0 - ProgressDelay())) {}

Progress::~Progress() {
    if (shown_) std::fprintf(stderr, "\r\033[K");
}

void Progress::Step(std::size_t done) {
    if (!State().progress || total_ == 0) return;
    const double now = Now();
    if (now - start_ < 1.0 || now - last_ < 0.2) return;
    last_ = now;
    shown_ = true;
    std::fprintf(stderr, "\rvemtool: %s %3zu%%", what_, done * 100 / total_);
    std::fflush(stderr);
}

namespace {

bool TearDown() {
#ifdef VEMTOOL_SANITIZED
    return true;
#else
    const char* text = std::getenv("VEMTOOL_TEARDOWN");
    return text && *text && std::strcmp(text, "0") != 0;
#endif
}

// Trees given up, still reachable from here (a leak checker sees them held, not lost).
std::vector<CVemBaseNode*>& Kept() {
    static std::vector<CVemBaseNode*> kept;
    return kept;
}

}  // namespace

void Discard(CVemBaseNode* root) {
    if (root) Kept().push_back(root);
}

void DiscardAll() {
    std::vector<CVemBaseNode*>& kept = Kept();
    if (TearDown()) {
        for (CVemBaseNode* root : kept) VemDeleteNode(root);
        kept.clear();
    }
}

std::vector<CVemBaseNode*> Children(CVemBaseNode* node) {
    std::vector<CVemBaseNode*> out;
    CObList* list = VemGetChildList(node);
    for (POSITION pos = list->GetHeadPosition(); pos;) out.push_back(static_cast<CVemBaseNode*>(list->GetNext(pos)));
    return out;
}

std::vector<CVemBaseNode*> Subtree(CVemBaseNode* node) {
    std::vector<CVemBaseNode*> out;
    std::vector<CVemBaseNode*> stack{node};
    while (!stack.empty()) {
        CVemBaseNode* at = stack.back();
        stack.pop_back();
        out.push_back(at);
        CObList* list = VemGetChildList(at);
        for (POSITION pos = list->GetTailPosition(); pos;)
            stack.push_back(static_cast<CVemBaseNode*>(list->GetPrev(pos)));
    }
    return out;
}

std::vector<CEVemBaseNode*> CodeNodes(CVemBaseNode* exe) {
    std::vector<CEVemBaseNode*> out;
    CObList* list = VemGetEvemRootNodeListPtr(exe);
    if (!list) return out;
    for (POSITION pos = list->GetHeadPosition(); pos;) out.push_back(static_cast<CEVemBaseNode*>(list->GetNext(pos)));
    return out;
}

bool AbsoluteAddress(CVemBaseNode* task, u16 segment, u16 offset, u32& address) {
    const CDWordArray* table = task ? task->GetAbsOffsets() : nullptr;
    if (!table || segment >= table->GetSize()) return false;
    address = table->GetAt(segment) + offset;
    return true;
}

bool AbsoluteAddress(CVemBaseNode* node, u32& address) {
    CVemBaseNode* task = node;
    while (task && VemGetNodeType(task) != kVemTuiTaskNode) task = VemGetParentNode(task);
    if (!task) return false;
    const u32 type = VemGetNodeType(node);
    const bool unit =
        type == kVemProgramNode || type == kVemFbNode || type == kVemFunctionNode || type == kVemTuiTaskNode;
    if (unit) return AbsoluteAddress(task, VemGetDataSegment(node), 0, address);
    // Members of an expanded structure element count from the element (see Resolve).
    u16 offset = static_cast<u16>(VemGetOffset(node));
    for (CVemBaseNode* at = VemGetParentNode(node); at && VemGetParentNode(at); at = VemGetParentNode(at)) {
        if (VemGetNodeType(at) == kVemStructNode && VemGetNodeType(VemGetParentNode(at)) == kVemArrayNode) {
            offset = static_cast<u16>(offset + VemGetOffset(at));
        }
    }
    return AbsoluteAddress(task, VemGetParentSegment(node), offset, address);
}

}  // namespace vemtool
