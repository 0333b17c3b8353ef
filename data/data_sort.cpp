// dSort: reorders elements by up to three keys. "All Individually" sorts each
// channel it names by its own values; "All Follow Key" sorts by the key
// channels and gathers every named channel in that one order.
#include <array>
#include <cmath>
#include <cstring>
#include "data/effect_data.h"
#include "framework/registration.h"

namespace {

// The order that sorts n records by key 1, then 2, then 3, equal records in
// their original order. Stable radix passes of 11 bits over the keys' bits
// made monotonic, least significant key first; a pass in which every record
// falls in one bucket is skipped, so constant keys cost one look.
std::vector<uint32_t> SortOrder(const std::array<std::vector<float>, 3>& keys, int32_t n)
{
    const size_t count = static_cast<size_t>(n);
    std::vector<uint32_t> order(count), otherOrder(count);
    for (int32_t i = 0; i < n; ++i) order[size_t(i)] = uint32_t(i);
    if (n < 2) return order;
    std::vector<uint32_t> bits(count), otherBits(count);
    for (int32_t k = 2; k >= 0; --k) {
        const std::vector<float>& key = keys[size_t(k)];
        if (key.empty()) continue;
        std::array<std::array<uint32_t, 2048>, 3> counts{};
        for (int32_t i = 0; i < n; ++i) {
            const float f = key[order[size_t(i)]] + 0.0f;  // -0 sorts with 0
            uint32_t b;
            std::memcpy(&b, &f, 4);
            b = (b & 0x80000000u) ? ~b : b | 0x80000000u;
            bits[size_t(i)] = b;
            ++counts[0][b & 2047u];
            ++counts[1][(b >> 11) & 2047u];
            ++counts[2][b >> 22];
        }
        for (int32_t pass = 0; pass < 3; ++pass) {
            auto& count = counts[size_t(pass)];
            const uint32_t shift = uint32_t(pass) * 11u;
            if (count[(bits[0] >> shift) & 2047u] == uint32_t(n)) continue;
            uint32_t sum = 0;
            for (uint32_t& c : count) {
                const uint32_t here = c;
                c = sum;
                sum += here;
            }
            for (int32_t i = 0; i < n; ++i) {
                const uint32_t b = bits[size_t(i)], at = count[(b >> shift) & 2047u]++;
                otherBits[at] = b;
                otherOrder[at] = order[size_t(i)];
            }
            bits.swap(otherBits);
            order.swap(otherOrder);
        }
    }
    return order;
}

}  // namespace

class KEffectDataSort : public KEffectData {
public:
    KEffectDataSort()
    {
        DeclareChannelTool("Data Sort", &pattern, "*");
        inputList.AddMultiButton(&mode, 0, "Type", "Type"_id, kFlagNotify,
                                 {"All Individually", "All Follow Key", "[end]"});
        inputList.AddXYZ(&point, {}, "Point For Distance", "PoDi"_id, 0);
        const KItems directions = {"Ascending", "Descending", "[end]"};
        const KItems axes = {"By X", "By Y", "By Z", "Distance", "[end]"};
        const uint32_t nameIds[3] = {"CNK1"_id, "CNK2"_id, "CNK2"_id};  // key 3 shares key 2's code
        for (int32_t k = 0; k < 3; ++k) {
            const std::string n = std::to_string(k + 1);
            inputList.AddTextEdit(&keys[size_t(k)].name, ("value" + n).c_str(), ("Channel Name Key " + n).c_str(),
                                  nameIds[k], 0, 1);
            inputList.AddMultiButton(&keys[size_t(k)].direction, 0, ("Direction " + n).c_str(),
                                     "Dir0"_id + uint32_t(k + 1), 0, directions);
            inputList.AddMultiButton(&keys[size_t(k)].axis, 0, ("Vector Sort " + n).c_str(),
                                     "VeS0"_id + uint32_t(k + 1), 0, axes);
        }
    }

    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        // The key names belong to "All Follow Key"; key 3's name answers to
        // key 2's code, so a message for its own code finds no control.
        KMessageList list;
        if (id != "Type"_id) return list;
        const float shown = value.intValue == 1 ? 1.0f : 0.0f;
        for (uint32_t target : {"CNK1"_id, "CNK2"_id, "CNK3"_id, "Dir2"_id, "Dir3"_id, "VeS2"_id, "VeS3"_id})
            list.Add(kMessageVisible, target, shown);
        return list;
    }

    std::unique_ptr<KDataTable> Compute() override
    {
        if (mode == 0)
            return KEachChannel(input, pattern, [this](std::unique_ptr<KDataChannel> c) {
                std::array<std::vector<float>, 3> k;
                k[0] = Keys(*c, keys[0], c->count);
                Gather(*c, SortOrder(k, c->count));
                return c;
            });
        if (!input) return std::make_unique<KDataTable>();
        const int32_t n = input->minimumCount;
        std::array<std::vector<float>, 3> k;
        bool any = false;
        for (size_t j = 0; j < 3; ++j) {
            KDataChannel* c = input->FindAny(keys[j].name, kDataAny);
            any = any || c;
            k[j] = c ? Keys(*c, keys[j], n) : std::vector<float>();
        }
        if (!any) {
            auto shared = std::make_unique<KDataTable>();
            shared->ShareList(*input);
            return shared;
        }
        const std::vector<uint32_t> order = SortOrder(k, n);
        return KEachChannel(input, pattern, [&order](std::unique_ptr<KDataChannel> c) {
            Gather(*c, order);
            return c;
        });
    }

private:
    struct Key {
        std::string name;
        int32_t direction = 0, axis = 0;
    };

    // The sort values of the first n elements; a Bool key is 1 everywhere and
    // leaves its elements set to 1 in the tool's copy of the input.
    std::vector<float> Keys(KDataChannel& c, const Key& key, int32_t n) const
    {
        std::vector<float> v(size_t(n), 0.0f);
        const size_t fc = size_t(c.floatComponents);
        const float* f = c.floats.data();
        for (int32_t i = 0; i < n && i < c.count; ++i) {
            float x = 0.0f;
            switch (c.type) {
            case kDataBool: c.ints[size_t(i)] = 1, x = 1.0f; break;
            case kDataInteger: x = float(c.ints[size_t(i)]); break;
            case kDataFloat: x = f[i]; break;
            case kDataVector2: {
                const float* e = f + size_t(i) * fc;
                const float dx = e[0] - point.x, dy = e[1] - point.y;
                x = key.axis == 3 ? std::sqrt(dx * dx + dy * dy) : key.axis == 1 ? e[1] : e[0];
                break;
            }
            case kDataVector3: {
                const float* e = f + size_t(i) * fc;
                if (key.axis == 3) {
                    const float dx = e[0] - point.x, dy = e[1] - point.y, dz = e[2] - point.z;
                    x = std::sqrt(dx * dx + dy * dy + dz * dz);
                } else {
                    x = e[key.axis];
                }
                break;
            }
            default: break;
            }
            v[size_t(i)] = key.direction == 1 ? -x : x;
        }
        return v;
    }

    // Element j takes the element order[j] had; elements past the order keep
    // their values. A sorted Bool channel holds only true.
    static void Gather(KDataChannel& c, const std::vector<uint32_t>& order)
    {
        const size_t n = std::min(size_t(c.count), order.size());
        if (c.type == kDataBool) {
            std::fill(c.ints.begin(), c.ints.begin() + ptrdiff_t(n), 1);
            return;
        }
        GatherInto(c.ints, size_t(c.intComponents), order, n);
        GatherInto(c.floats, size_t(c.floatComponents), order, n);
    }
    template <class T>
    static void GatherInto(std::vector<T>& values, size_t components, const std::vector<uint32_t>& order, size_t n)
    {
        if (!components) return;
        std::vector<T> sorted(values.size());
        const T* from = values.data();
        T* to = sorted.data();
        for (size_t j = 0; j < n; ++j)
            for (size_t k = 0; k < components; ++k) to[j * components + k] = from[order[j] * components + k];
        std::copy(values.begin() + ptrdiff_t(n * components), values.end(), sorted.begin() + ptrdiff_t(n * components));
        values.swap(sorted);
    }

    std::string pattern = "*";
    int32_t mode = 0;
    KXYZ point;
    std::array<Key, 3> keys;
};

ZV_TOOL(KEffectDataSort, ZV_DataSort);
