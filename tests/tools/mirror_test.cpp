// Mirror: declarations, the kept side, and reflection across a slanted line.
#include "warp_support.h"

using namespace zvtest;

TEST(Mirror, ReflectsAcrossTheLineThroughBothPoints)
{
    Warp w("ZV_Mirror");
    w.SetPoint("MirL"_id, 0.25f, 0.25f);
    w.SetPoint("MirR"_id, 0.75f, 0.75f);
    w.Start();
    ExpectMaps(w, {{0.5f, 0.25f, 0.5f, 0.25f}}, 0.0f);  // the normal (-dy, dx) points away
    ExpectMaps(w, {{0.1f, 0.9f, 0.9f, 0.1f}, {0.6f, 0.6f, 0.6f, 0.6f}}, 2e-6f);  // across; on the line
    w.SetBool("Mirror all", true);
    w.Start();
    ExpectMaps(w, {{0.5f, 0.25f, 0.25f, 0.5f}}, 2e-6f);
    // From right to left the kept side changes.
    w.SetBool("Mirror all", false);
    w.SetPoint("MirL"_id, 0.75f, 0.4f);
    w.SetPoint("MirR"_id, 0.25f, 0.4f);
    w.Start();
    ExpectMaps(w, {{0.3f, 0.5f, 0.3f, 0.5f}, {0.3f, 0.1f, 0.3f, 0.7f}}, 2e-6f);
}

