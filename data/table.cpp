#include "data/table.h"
#include <algorithm>
#include <cstdio>
#include <numeric>

namespace {

std::string Trim(const std::string& s)
{
    const size_t first = s.find_first_not_of(' ');
    if (first == std::string::npos) return {};
    return s.substr(first, s.find_last_not_of(' ') - first + 1);
}

// Integers and floats per element of a type.
void Components(int32_t type, int32_t& ints, int32_t& floats)
{
    ints = type == kDataBool || type == kDataInteger ? 1 : 0;
    switch (type) {
    case kDataColor: floats = 4; break;
    case kDataFloat: floats = 1; break;
    case kDataVector2: floats = 2; break;
    case kDataVector3: floats = 3; break;
    default: floats = 0; break;
    }
}

// "?" takes one character; a final "*" takes any rest, even none; an inner
// "*" needs the rest of the pattern to match from some position before the end.
bool Wildcard(const char* p, const char* s)
{
    for (; *p; ++p) {
        if (*p == '*') {
            if (!p[1]) return true;
            for (; *s; ++s)
                if (Wildcard(p + 1, s)) return true;
            return false;
        }
        if (!*s || (*p != '?' && *p != *s)) return false;
        ++s;
    }
    return !*s;
}

}  // namespace

std::unique_ptr<KDataChannel> KDataChannel::Create(const std::string& name, int32_t type, int32_t count)
{
    auto c = std::make_unique<KDataChannel>();
    c->name = name.empty() ? "name" : Trim(name);
    c->type = type;
    c->count = std::max(count, 0);
    Components(type, c->intComponents, c->floatComponents);
    c->ints.assign(size_t(c->count) * c->intComponents, 0);
    c->floats.assign(size_t(c->count) * c->floatComponents, 0.0f);
    return c;
}

float KDataChannel::Maximum() const
{
    return floats.empty() ? 0.0f : *std::max_element(floats.begin(), floats.end());
}

float KDataChannel::Minimum() const
{
    return floats.empty() ? 0.0f : *std::min_element(floats.begin(), floats.end());
}

float KDataChannel::Sum() const { return std::accumulate(floats.begin(), floats.end(), 0.0f); }

int32_t KDataTypeIndex(int32_t type)
{
    switch (type) {
    case kDataBool: return 1;
    case kDataInteger: return 2;
    case kDataFloat: return 3;
    case kDataVector2: return 4;
    case kDataVector3: return 5;
    case kDataColor: return 6;
    case kDataMatrix: return 7;
    case kDataText: return 8;
    default: return 0;
    }
}

std::unique_ptr<KDataTable> KDataTable::Clone() const
{
    auto t = std::make_unique<KDataTable>();
    t->tag = tag;
    t->minimumCount = minimumCount;
    t->maximumCount = maximumCount;
    for (const auto& c : channels) t->Add(c ? c->Clone() : nullptr);
    return t;
}

void KDataTable::Add(std::unique_ptr<KDataChannel> channel)
{
    if (!channel) return;
    minimumCount = channels.empty() ? channel->count : std::min(minimumCount, channel->count);
    maximumCount = std::max(maximumCount, channel->count);
    channels.push_back(std::move(channel));
}

void KDataTable::AddShared(const KDataTable& source, size_t i)
{
    const std::shared_ptr<KDataChannel>& channel = source.channels[i];
    if (!channel) return;
    minimumCount = channels.empty() ? channel->count : std::min(minimumCount, channel->count);
    maximumCount = std::max(maximumCount, channel->count);
    channels.push_back(channel);
}

void KDataTable::ShareList(const KDataTable& source)
{
    tag = source.tag;
    channels = source.channels;
    minimumCount = source.minimumCount;
    maximumCount = source.maximumCount;
}

KDataChannel* KDataTable::FindAny(const std::string& pattern, int32_t type) const
{
    for (const auto& c : channels)
        if ((type == kDataAny || c->type == type) && KDataNameMatches(pattern, c->name)) return c.get();
    return nullptr;
}

KDataChannel* KDataTable::FindCompatible(const std::string& pattern, int32_t wanted) const
{
    for (const auto& c : channels)
        if ((wanted == kDataAny || KDataCompatible(c->type, wanted)) && KDataNameMatches(pattern, c->name))
            return c.get();
    return nullptr;
}

std::vector<KDataChannel*> KDataTable::FindAll(const std::string& pattern, int32_t type) const
{
    std::vector<KDataChannel*> found;
    for (const auto& c : channels)
        if (c->type == type && KDataNameMatches(pattern, c->name)) found.push_back(c.get());
    return found;
}

std::string KDataTable::Dump() const
{
    std::string text;
    for (const auto& c : channels) {
        char count[32];
        std::snprintf(count, sizeof count, "%d", c->count);
        text += c->name + " [" + count + "]     ";
        switch (c->type) {
        case kDataBool: text += "int32 [1]      Bool"; break;
        case kDataColor: text += "float32 [4]      Color"; break;
        case kDataInteger: text += "int32 [1]      Integer"; break;
        case kDataFloat: text += "float32 [1]      Float"; break;
        case kDataVector2: text += "float32 [2]      Vector2"; break;
        case kDataVector3: text += "float32 [3]      Vector3"; break;
        default: break;
        }
        text += '\n';
    }
    return text;
}

bool KDataCompatible(int32_t have, int32_t wanted)
{
    switch (have) {
    case kDataBool:
    case kDataInteger: return wanted == kDataBool || wanted == kDataInteger;
    case kDataFloat: return wanted == kDataFloat;
    case kDataVector2: return wanted == kDataFloat || wanted == kDataVector2;
    case kDataVector3: return wanted == kDataFloat || wanted == kDataVector2 || wanted == kDataVector3;
    case kDataColor:
        return wanted == kDataFloat || wanted == kDataVector2 || wanted == kDataVector3 || wanted == kDataColor;
    default: return have == wanted;
    }
}

bool KDataNameMatches(const std::string& pattern, const std::string& name)
{
    if (pattern == "*" || pattern == name) return true;
    if (pattern.empty() || name.empty()) return false;
    size_t start = 0;
    while (start <= pattern.size()) {
        const size_t comma = std::min(pattern.find(',', start), pattern.size());
        const std::string piece = Trim(pattern.substr(start, comma - start));
        if (!piece.empty() && Wildcard(piece.c_str(), name.c_str())) return true;
        start = comma + 1;
    }
    return false;
}

bool KDataNameUsable(const std::string& name)
{
    const std::string t = Trim(name);
    return !t.empty() && t[0] != '#';
}
