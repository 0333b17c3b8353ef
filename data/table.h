// The data table: an ordered list of named, typed channels, each an array with
// one element per item (positions, rotations, colours of a crowd of copies).
// Tables travel between the data tools; channels are found by name patterns.
#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// Channel types share the numbers of the parameter value kinds.
enum KDataType : int32_t {
    kDataAny = 0, kDataBool = 2, kDataColor = 3, kDataInteger = 6, kDataFloat = 7,
    kDataVector2 = 9, kDataText = 13, kDataMatrix = 15, kDataVector3 = 16,
};

struct KDataChannel {
    // Zero-filled storage for `count` elements of the type; an empty name
    // becomes "name", blanks around it are trimmed, a count below 1 is 0.
    static std::unique_ptr<KDataChannel> Create(const std::string& name, int32_t type, int32_t count);
    std::unique_ptr<KDataChannel> Clone() const { return std::make_unique<KDataChannel>(*this); }

    // Over every stored float, all components together; 0 when there are none.
    float Maximum() const;
    float Minimum() const;
    float Sum() const;

    std::string name;
    int32_t type = kDataAny;
    int32_t count = 0;
    int32_t floatComponents = 0;
    int32_t intComponents = 0;
    std::vector<int32_t> ints;    // element i at i * intComponents
    std::vector<float> floats;    // component c of element i at i * floatComponents + c
    std::vector<std::string> texts;
};

// The index of a type in the pickers' list "Any", "Bool", "Integer", "Float",
// "Vector2", "Vector3", "Color" ("Matrix" 7, "Text" 8); 0 for any other.
int32_t KDataTypeIndex(int32_t type);

class KDataTable {
public:
    KDataTable() = default;
    // A deep copy: the channels are cloned.
    std::unique_ptr<KDataTable> Clone() const;
    // Takes the channel over; a null channel is ignored.
    void Add(std::unique_ptr<KDataChannel> channel);
    // The same channels, shared with `source` rather than copied.
    void ShareList(const KDataTable& source);
    // Adds channel i of `source` itself, shared rather than copied, as Add
    // counts it: for a channel a tool passes on untouched.
    void AddShared(const KDataTable& source, size_t i);

    KDataChannel* Channel(size_t i) const { return channels[i].get(); }
    size_t ChannelCount() const { return channels.size(); }

    // The first channel, in list order, whose name the pattern matches and whose
    // type is `type` (any type for kDataAny); null when none.
    KDataChannel* FindAny(const std::string& pattern, int32_t type) const;
    // The first whose type can stand for `wanted` (a Vector3 for a Float, ...).
    KDataChannel* FindCompatible(const std::string& pattern, int32_t wanted) const;
    // Every channel of exactly that type whose name matches, in list order.
    std::vector<KDataChannel*> FindAll(const std::string& pattern, int32_t type) const;

    // One line per channel: name, " [count]", five blanks and its type words.
    std::string Dump() const;

    uint32_t tag = 0;
    int32_t minimumCount = 0;
    int32_t maximumCount = 0;

private:
    // Shared so that a table made by ShareList keeps its channels alive.
    std::vector<std::shared_ptr<KDataChannel>> channels;
};

// Whether a channel of type `have` can be read as `wanted`.
bool KDataCompatible(int32_t have, int32_t wanted);
// The matching rule every data tool uses: "*" or the name itself; otherwise any
// of the comma-separated, trimmed pieces under "?" and "*" wildcards.
bool KDataNameMatches(const std::string& pattern, const std::string& name);
// A name a tool may make a channel of: not empty, and not starting with "#"
// once trimmed ("#channel" turns an output off).
bool KDataNameUsable(const std::string& name);
