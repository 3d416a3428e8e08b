// The collections: arrays, lists and maps of the platform. Maps iterate in insertion order, and a
// replaced value keeps its place, so that a store, a load and a store again give the same bytes.
#pragma once

#include <vector>

#include "platform/cstring.h"
#include "platform/exceptions.h"
#include "platform/object.h"

class CArchive;

namespace vem::detail {

// Doubly linked list; POSITION is a pointer to a link.
template <typename T>
class LinkedList {
public:
    struct Link {
        T value;
        Link* prev;
        Link* next;
    };
    LinkedList() = default;
    LinkedList(const LinkedList&) = delete;
    LinkedList& operator=(const LinkedList&) = delete;
    ~LinkedList() { RemoveAll(); }

    int GetCount() const { return count_; }
    bool IsEmpty() const { return count_ == 0; }
    POSITION GetHeadPosition() const { return ToPos(head_); }
    POSITION GetTailPosition() const { return ToPos(tail_); }
    T& GetHead() { return head_->value; }
    const T& GetHead() const { return head_->value; }
    T& GetTail() { return tail_->value; }
    const T& GetTail() const { return tail_->value; }
    T& GetNext(POSITION& pos) {
        Link* l = FromPos(pos);
        pos = ToPos(l->next);
        return l->value;
    }
    const T& GetNext(POSITION& pos) const {
        Link* l = FromPos(pos);
        pos = ToPos(l->next);
        return l->value;
    }
    T& GetPrev(POSITION& pos) {
        Link* l = FromPos(pos);
        pos = ToPos(l->prev);
        return l->value;
    }
    T& GetAt(POSITION pos) { return FromPos(pos)->value; }
    const T& GetAt(POSITION pos) const { return FromPos(pos)->value; }
    void SetAt(POSITION pos, const T& v) { FromPos(pos)->value = v; }
    POSITION AddHead(const T& v) { return InsertBefore(GetHeadPosition(), v); }
    POSITION AddTail(const T& v) { return InsertAfter(GetTailPosition(), v); }
    // A null position inserts at the head (before) or at the tail (after).
    POSITION InsertBefore(POSITION pos, const T& v) {
        Link* at = FromPos(pos);
        Link* l = at ? new Link{v, at->prev, at} : new Link{v, nullptr, head_};
        Hook(l);
        return ToPos(l);
    }
    POSITION InsertAfter(POSITION pos, const T& v) {
        Link* at = FromPos(pos);
        Link* l = at ? new Link{v, at, at->next} : new Link{v, tail_, nullptr};
        Hook(l);
        return ToPos(l);
    }
    T RemoveHead() {
        T v = head_->value;
        RemoveAt(ToPos(head_));
        return v;
    }
    T RemoveTail() {
        T v = tail_->value;
        RemoveAt(ToPos(tail_));
        return v;
    }
    void RemoveAt(POSITION pos) {
        Link* l = FromPos(pos);
        (l->prev ? l->prev->next : head_) = l->next;
        (l->next ? l->next->prev : tail_) = l->prev;
        --count_;
        delete l;
    }
    void RemoveAll() {
        Link* l = head_;
        while (l) {
            Link* n = l->next;
            delete l;
            l = n;
        }
        head_ = tail_ = nullptr;
        count_ = 0;
    }
    // Moves every link of `other` to the front of this list, in their order, without allocating.
    void SpliceFront(LinkedList& other) {
        if (!other.head_) return;
        other.tail_->next = head_;
        (head_ ? head_->prev : tail_) = other.tail_;
        head_ = other.head_;
        count_ += other.count_;
        other.head_ = other.tail_ = nullptr;
        other.count_ = 0;
    }
    POSITION FindIndex(int index) const {
        if (index < 0 || index >= count_) return nullptr;
        Link* l = head_;
        while (index-- > 0) l = l->next;
        return ToPos(l);
    }

protected:
    static POSITION ToPos(Link* l) { return reinterpret_cast<POSITION>(l); }
    static Link* FromPos(POSITION p) { return reinterpret_cast<Link*>(p); }
    void Hook(Link* l) {
        (l->prev ? l->prev->next : head_) = l;
        (l->next ? l->next->prev : tail_) = l;
        ++count_;
    }
    Link* head_ = nullptr;
    Link* tail_ = nullptr;
    int count_ = 0;
};

// Map with unique keys that iterates in insertion order; a replaced value keeps its place. The
// entries form a list in that order; the index over them is an open-addressed table of the
// entries' hashes, so that a lookup reads one slot and the entry it points to.
template <typename K, typename V, typename Hash>
class OrderedMap {
public:
    struct Entry {
        K key;
        V value;
        Entry* prev;
        Entry* next;
    };
    OrderedMap() = default;
    OrderedMap(const OrderedMap&) = delete;
    OrderedMap& operator=(const OrderedMap&) = delete;
    ~OrderedMap() { RemoveAll(); }

    int GetCount() const { return static_cast<int>(count_); }
    int GetSize() const { return GetCount(); }
    bool IsEmpty() const { return count_ == 0; }
    bool Lookup(const K& key, V& value) const {
        const Entry* e = Find(key, HashOf(key));
        if (!e) return false;
        value = e->value;
        return true;
    }
    const V* PLookup(const K& key) const {
        const Entry* e = Find(key, HashOf(key));
        return e ? &e->value : nullptr;
    }
    V& operator[](const K& key) {
        const std::size_t hash = HashOf(key);
        if (Entry* e = Find(key, hash)) return e->value;
        if ((count_ + 1) * 8 > slots_.size() * 7) Rehash(slots_.empty() ? kMinSlots : slots_.size() * 2);
        Entry* e = new Entry{key, V(), tail_, nullptr};  // nothing has changed if this throws
        (tail_ ? tail_->next : head_) = e;
        tail_ = e;
        Place(Slot{hash, e});
        ++count_;
        return e->value;
    }
    void SetAt(const K& key, const V& value) { (*this)[key] = value; }
    bool RemoveKey(const K& key) {
        if (slots_.empty()) return false;
        const std::size_t hash = HashOf(key);
        const std::size_t mask = slots_.size() - 1;
        std::size_t i = Home(hash);
        while (slots_[i].entry && !(slots_[i].hash == hash && slots_[i].entry->key == key)) i = (i + 1) & mask;
        Entry* e = slots_[i].entry;
        if (!e) return false;
        // Close the gap: every later slot of the run whose home does not lie after the gap moves
        // into it, so that no lookup stops short of its key.
        for (std::size_t j = (i + 1) & mask; slots_[j].entry; j = (j + 1) & mask) {
            const std::size_t home = Home(slots_[j].hash);
            const bool homeAfterGap = i <= j ? (home > i && home <= j) : (home > i || home <= j);
            if (homeAfterGap) continue;
            slots_[i] = slots_[j];
            i = j;
        }
        slots_[i] = Slot{};
        --count_;
        (e->prev ? e->prev->next : head_) = e->next;
        (e->next ? e->next->prev : tail_) = e->prev;
        delete e;
        return true;
    }
    void RemoveAll() {
        Entry* e = head_;
        while (e) {
            Entry* n = e->next;
            delete e;
            e = n;
        }
        head_ = tail_ = nullptr;
        count_ = 0;
        std::vector<Slot>().swap(slots_);
    }
    POSITION GetStartPosition() const { return reinterpret_cast<POSITION>(head_); }
    void GetNextAssoc(POSITION& pos, K& key, V& value) const {
        Entry* e = reinterpret_cast<Entry*>(pos);
        key = e->key;
        value = e->value;
        pos = reinterpret_cast<POSITION>(e->next);
    }
    void InitHashTable(unsigned size) {
        std::size_t slots = kMinSlots;
        while (slots * 7 < static_cast<std::size_t>(size) * 8) slots *= 2;
        if (slots > slots_.size()) Rehash(slots);
    }

private:
    struct Slot {
        std::size_t hash = 0;
        Entry* entry = nullptr;  // null: free
    };
    static constexpr std::size_t kMinSlots = 16;

    static std::size_t HashOf(const K& key) { return Hash()(key); }
    // The slot where a hash starts looking: the high bits of the hash spread by a multiplication,
    // so that keys that differ in a few low bits (small words, numbered names) spread too.
    std::size_t Home(std::size_t hash) const {
        return static_cast<std::size_t>((static_cast<u64>(hash) * 0x9E3779B97F4A7C15ull) >> (64 - shift_));
    }
    Entry* Find(const K& key, std::size_t hash) const {
        if (slots_.empty()) return nullptr;
        const std::size_t mask = slots_.size() - 1;
        for (std::size_t i = Home(hash);; i = (i + 1) & mask) {
            const Slot& slot = slots_[i];
            if (!slot.entry) return nullptr;
            if (slot.hash == hash && slot.entry->key == key) return slot.entry;
        }
    }
    void Place(const Slot& slot) {
        const std::size_t mask = slots_.size() - 1;
        std::size_t i = Home(slot.hash);
        while (slots_[i].entry) i = (i + 1) & mask;
        slots_[i] = slot;
    }
    // A table of `slots` (a power of two) slots with every entry placed anew.
    void Rehash(std::size_t slots) {
        std::vector<Slot> grown(slots);
        unsigned shift = 0;
        while ((std::size_t{1} << shift) < slots) ++shift;
        std::vector<Slot> old = std::move(slots_);
        slots_ = std::move(grown);
        shift_ = shift;
        for (const Slot& slot : old) {
            if (slot.entry) Place(slot);
        }
    }

    Entry* head_ = nullptr;
    Entry* tail_ = nullptr;
    std::size_t count_ = 0;
    unsigned shift_ = 0;
    std::vector<Slot> slots_;
};

// Growing array with checked access; an index outside raises the invalid-argument exception.
template <typename T>
class CheckedArray {
public:
    int GetSize() const { return static_cast<int>(v_.size()); }
    int GetCount() const { return GetSize(); }
    int GetUpperBound() const { return GetSize() - 1; }
    bool IsEmpty() const { return v_.empty(); }
    void SetSize(int newSize, int growBy = -1) {
        if (newSize < 0) VemThrowInvalidArg();
        if (growBy > 0) growBy_ = growBy;
        v_.resize(static_cast<std::size_t>(newSize), T());
    }
    const T& GetAt(int i) const {
        Check(i);
        return v_[static_cast<std::size_t>(i)];
    }
    T& ElementAt(int i) {
        Check(i);
        return v_[static_cast<std::size_t>(i)];
    }
    void SetAt(int i, const T& v) { ElementAt(i) = v; }
    T& operator[](int i) { return ElementAt(i); }
    const T& operator[](int i) const { return GetAt(i); }
    void SetAtGrow(int i, const T& v) {
        if (i < 0) VemThrowInvalidArg();
        if (i >= GetSize()) SetSize(i + 1);
        v_[static_cast<std::size_t>(i)] = v;
    }
    int Add(const T& v) {
        v_.push_back(v);
        return GetSize() - 1;
    }
    void InsertAt(int i, const T& v, int count = 1) {
        if (i < 0 || count < 0) VemThrowInvalidArg();
        if (i > GetSize()) SetSize(i);
        v_.insert(v_.begin() + i, static_cast<std::size_t>(count), v);
    }
    void RemoveAt(int i, int count = 1) {
        if (i < 0 || count < 0 || i + count > GetSize()) VemThrowInvalidArg();
        v_.erase(v_.begin() + i, v_.begin() + i + count);
    }
    void RemoveAll() {
        v_.clear();
        v_.shrink_to_fit();
    }
    T* GetData() { return v_.data(); }
    const T* GetData() const { return v_.data(); }
    int GetGrowBy() const { return growBy_; }

protected:
    void Check(int i) const {
        if (i < 0 || i >= GetSize()) VemThrowInvalidArg();
    }
    std::vector<T> v_;
    int growBy_ = 0;
};

struct WordHash {
    std::size_t operator()(u16 w) const noexcept { return w; }
};

}  // namespace vem::detail

// Array of object pointers; it does not own them. Stored as a count and object references.
class VEM_API CObArray : public CObject, public vem::detail::CheckedArray<CObject*> {
    VEM_DECLARE_SERIAL(CObArray)
public:
    void Serialize(CArchive& ar) override;
};

class VEM_API CDWordArray : public CObject, public vem::detail::CheckedArray<u32> {
    VEM_DECLARE_SERIAL(CDWordArray)
public:
    void Serialize(CArchive& ar) override;  // count, then 32-bit words
};

class VEM_API CWordArray : public CObject, public vem::detail::CheckedArray<u16> {
    VEM_DECLARE_SERIAL(CWordArray)
public:
    void Serialize(CArchive& ar) override;  // count, then 16-bit words
};

class VEM_API CStringArray : public CObject, public vem::detail::CheckedArray<CString> {
    VEM_DECLARE_SERIAL(CStringArray)
public:
    void Serialize(CArchive& ar) override;  // count, then strings
};

// List of object pointers; it does not own them.
class VEM_API CObList : public CObject, public vem::detail::LinkedList<CObject*> {
    VEM_DECLARE_SERIAL(CObList)
public:
    explicit CObList(int blockSize = 10) { (void)blockSize; }
    POSITION Find(const CObject* value, POSITION startAfter = nullptr) const;
    void Serialize(CArchive& ar) override;
};

class VEM_API CStringList : public CObject, public vem::detail::LinkedList<CString> {
    VEM_DECLARE_SERIAL(CStringList)
public:
    explicit CStringList(int blockSize = 10) { (void)blockSize; }
    POSITION Find(const char* value, POSITION startAfter = nullptr) const;
    void Serialize(CArchive& ar) override;
};

// Map from text to object pointer; it does not own the objects.
class VEM_API CMapStringToOb : public CObject, public vem::detail::OrderedMap<CString, CObject*, CStringHash> {
    VEM_DECLARE_SERIAL(CMapStringToOb)
public:
    explicit CMapStringToOb(int blockSize = 10) { (void)blockSize; }
    void Serialize(CArchive& ar) override;  // count, then key string and object reference
};

class VEM_API CMapStringToString : public CObject, public vem::detail::OrderedMap<CString, CString, CStringHash> {
    VEM_DECLARE_SERIAL(CMapStringToString)
public:
    explicit CMapStringToString(int blockSize = 10) { (void)blockSize; }
    void Serialize(CArchive& ar) override;  // count, then key and value strings
};

class VEM_API CMapWordToOb : public CObject, public vem::detail::OrderedMap<u16, CObject*, vem::detail::WordHash> {
    VEM_DECLARE_SERIAL(CMapWordToOb)
public:
    explicit CMapWordToOb(int blockSize = 10) { (void)blockSize; }
    void Serialize(CArchive& ar) override;  // count, then u16 key and object reference
};
