// Radial: declarations and the constant push away from Center.
#include "warp_support.h"

using namespace zvtest;

TEST(Radial, MovesEveryPointByTheOffsetAlongItsRadius)
{
    Warp w("ZV_Radial");
    w.SetPoint("Cent"_id, 0.4f, 0.5f);
    w.Start();
    ExpectMaps(w, {{0.9f, 0.2f, 0.9f, 0.2f}}, 0.0f);  // a zero offset is exactly the identity
    w.Set("RaOX"_id, 0.1f);
    w.Start();
    ExpectMaps(w, {{0.7f, 0.5f, 0.6f, 0.5f},
                   {0.4f, 0.9f, 0.4f, 0.8f},
                   {0.7f, 0.9f, 0.64f, 0.82f},  // a 3-4-5 radius of 0.5
                   {0.4f, 0.55f, 0.4f, 0.45f},  // inside the offset: through the middle
                   {0.4f, 0.5f, 0.4f, 0.5f}},   // the centre itself stays
               2e-6f);
    w.Set("RaOX"_id, -0.2f);  // a negative offset gathers the picture in
    w.Start();
    ExpectMaps(w, {{0.4f, 0.3f, 0.4f, 0.1f}}, 2e-6f);
}
