// dGrow: scales the Float channels it names by the range generator's progress,
// so that their values grow in one after another: element i is multiplied by
// (1 - c) x d of its item.
#include "data/effect_data.h"
#include "data/range.h"
#include "framework/registration.h"

class KEffectDataGrow : public KEffectData {
public:
    KEffectDataGrow()
    {
        DeclareChannelTool("Data Grow", &pattern, "*");
        range.Declare(inputList);
    }

    std::unique_ptr<KDataTable> Compute() override
    {
        return KEachChannel(input, pattern, [this](std::unique_ptr<KDataChannel> c) {
            const std::vector<KRangeItem> items = range.Generate(c->count);
            if (c->type == kDataFloat)
                for (int32_t i = 0; i < c->count; ++i)
                    c->floats[size_t(i)] *= (1.0f - items[size_t(i)].c) * items[size_t(i)].d;
            return c;
        });
    }

private:
    std::string pattern = "*";
    KRange range;
};

ZV_TOOL(KEffectDataGrow, ZV_DataGrow);
