// dChannels Create: channels in group order, the count set or taken from the
// table that arrives, and only empty names skipped.
#include "data/effect_data.h"
#include "support.h"

using namespace zvtest;

TEST(DataChannelsCreate, GroupsInOrderCountAndNames)
{
    Tool<KEffectData> tool("ZV_DataChannelsCreate");
    tool.Set("Count", 4);
    tool.SetBool("Channel Boolean Enable 3", true);
    tool.SetText("Channel Name Boolean 3", "#kept");   // a "#" name still makes a channel here
    tool.SetBool("Channel Float Enable 1", true);       // no name: nothing
    tool.SetBool("Channel Float Enable 0", true);
    tool.SetBool("Channel Integer Enable 0", true);
    EXPECT_EQ(tool.effect->Compute()->Dump(),
              "index [4]     int32 [1]      Integer\n"
              "number [4]     float32 [1]      Float\n"
              "#kept [4]     int32 [1]      Bool\n");
    KDataTable upstream;
    upstream.Add(KDataChannel::Create("id", kDataInteger, 2));
    upstream.Add(KDataChannel::Create("p", kDataVector3, 7));
    tool.Field<KDataTable*>("Data", kValueData) = &upstream;
    tool.SetBool("Count From Input", true);
    const std::string dump = tool.effect->Compute()->Dump();
    tool.Field<KDataTable*>("Data", kValueData) = nullptr;
    EXPECT_EQ(dump.substr(0, dump.find("index")), upstream.Dump());
    EXPECT_NE(dump.find("index [7]"), std::string::npos);  // the input's largest count
}
