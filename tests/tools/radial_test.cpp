// Radial: the constant push away from Center.
#include "warp_support.h"

using namespace zvtest;

TEST(Radial, MovesEveryPointByTheOffsetAlongItsRadius)
{
    Warp w("ZV_Radial");
    ExpectSteps(w, 2e-6f, {
        {{{"Center", 0.4, 0.5}}, {{0.9f, 0.2f, 0.9f, 0.2f}}},  // a zero offset is the identity
        {{{"Radial Offset", 0.1}},
         {{0.7f, 0.5f, 0.6f, 0.5f}, {0.7f, 0.9f, 0.64f, 0.82f},  // a 3-4-5 radius of 0.5
          {0.4f, 0.55f, 0.4f, 0.45f},                             // inside the offset: through the middle
          {0.4f, 0.5f, 0.4f, 0.5f}}},                             // the centre itself stays
        {{{"Radial Offset", -0.2}}, {{0.4f, 0.3f, 0.4f, 0.1f}}},  // a negative offset gathers the picture in
    });
}
