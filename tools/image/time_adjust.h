// How a time tool reads the flow's time: as it stands, sped up by Speed, or
// held at Source time. Smart Field Strobe and Vector Time offer it as
// "Adjust"; Average as "Main Time", with its own labels and limits.
#pragma once
#include <cstdint>
#include "framework/message.h"
#include "framework/parameter.h"

enum KTimeAdjustMode : int32_t { kTimeAsIs = 0, kTimeSpeed, kTimeStretch };

inline float KAdjustedTime(int32_t mode, float time, float speed, float sourceTime)
{
    return mode == kTimeSpeed ? time * speed : mode == kTimeStretch ? sourceTime : time;
}

struct KTimeAdjust {
    int32_t mode = kTimeAsIs;
    float speed = 1.0f, sourceTime = 0.0f;

    void Declare(KParameterList& in)
    {
        in.AddMultiButton(&mode, kTimeAsIs, "Adjust", "TiAd"_id, kFlagNotify,
                          {"Not", "Time Speed", "Time Stretch", "[end]"});
        in.AddSlider(&speed, 1.0f, "Speed", "TiSp"_id, kFlagHardMax, 0.0, 3.0);
        in.AddSlider(&sourceTime, 0.0f, "Source time", "TiSo"_id, kFlagHardMin | kFlagHardMax, 0.0, 100.0);
    }
    // Speed shows for "Time Speed", Source time for "Time Stretch".
    void Show(uint32_t id, const KMessageValue& value, KMessageList& list) const
    {
        if (id != "TiAd"_id) return;
        list.Add(kMessageVisible, "TiSp"_id, value.intValue == kTimeSpeed ? 1.0f : 0.0f);
        list.Add(kMessageVisible, "TiSo"_id, value.intValue == kTimeStretch ? 1.0f : 0.0f);
    }
    float At(float time) const { return KAdjustedTime(mode, time, speed, sourceTime); }
};
