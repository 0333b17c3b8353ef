// Intrusive, owning list: every bookkeeping record of the framework is a KListItem.
#pragma once
#include <cstdint>
#include <string>
#include <utility>

class KListItem {
public:
    virtual ~KListItem() = default;
    KListItem* next = nullptr;
    KListItem* prev = nullptr;
};

class KList {
public:
    KList() = default;
    KList(const KList&) = delete;
    KList& operator=(const KList&) = delete;
    // Moving hands the items over; the moved-from list is left empty.
    KList(KList&& other) noexcept { *this = std::move(other); }
    KList& operator=(KList&& other) noexcept;
    virtual ~KList() { Clear(); }

    KListItem* Append(KListItem* item);
    void Clear();
    // Unhooks head without deleting it. When the last item goes, tail keeps
    // pointing at it: popping lists are only ever walked empty, never appended to.
    KListItem* PopHead();

    KListItem* head = nullptr;
    KListItem* tail = nullptr;
    int32_t count = 0;
};

class KName : public KListItem {
public:
    explicit KName(std::string t) : text(std::move(t)) {}
    std::string text;
};

class KNameList : public KList {};
