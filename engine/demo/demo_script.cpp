#include "demo/demo_script.h"

namespace imsdk::demo {

namespace {

constexpr std::int64_t kHour = 60;
constexpr std::int64_t kDay = 24 * kHour;

constexpr const wchar_t* kHarbor = L"harbor";
constexpr const wchar_t* kLighthouse = L"lighthouse";
constexpr const wchar_t* kMariner = L"mariner";
constexpr const wchar_t* kTribe = L"";

constexpr ScriptLine kLines[] = {
    {3 * kDay + 95, kHarbor, kLighthouse, L"Morning! Is the lamp fixed?"},
    {3 * kDay + 92, kLighthouse, kHarbor, L"Nearly. The new bulb comes on Thursday’s boat."},
    {3 * kDay + 90, kLighthouse, kHarbor, L"Until then the old one has to do \U0001F926"},
    {3 * kDay + 41, kHarbor, kLighthouse,
     L"Then please:\n1. keep the shutters open\n2. log every outage\n3. ring the bell in fog"},
    {3 * kDay + 38, kLighthouse, kHarbor, L"Will do. This is what it sounds like now:"},
    {3 * kDay + 37, kLighthouse, kHarbor, L"bell.wav", biz::kMsgAudio},
    {3 * kDay + 30, kHarbor, kLighthouse, L"Loud enough \U0001F514\U0001F44D"},
    {2 * kDay + 4 * kHour, kHarbor, kLighthouse, L"tides.txt", biz::kMsgFile},
    {2 * kDay + 4 * kHour - 2, kHarbor, kLighthouse,
     L"The tide table for the week. Spring tide on Saturday, mind the lower path."},
    {2 * kDay + 3 * kHour, kLighthouse, kHarbor, L"Got it, thanks!"},
    {kDay + 70, kLighthouse, kHarbor, L"evening.png", biz::kMsgPicture},
    {kDay + 68, kLighthouse, kHarbor, L"It works again. What a light!"},
    {kDay + 60, kHarbor, kLighthouse, L"灯塔真漂亮！\U0001F305 Can I put it on the notice board?"},
    {kDay + 55, kLighthouse, kHarbor, L"Of course :)"},
    {46, kLighthouse, kHarbor, L"Fog is coming in from the west.", biz::kMsgText, true},
    {44, kLighthouse, kHarbor, L"Visibility below half a mile.\nI start the bell at six.",
     biz::kMsgText, true},

    {4 * kDay + 200, kMariner, kHarbor, L"Ahoj! Máte volné místo u mola 3?"},
    {4 * kDay + 180, kHarbor, kMariner, L"Pier 3 is free from Friday noon. How long are you?"},
    {4 * kDay + 175, kMariner, kHarbor, L"14 m, draught 2.1"},
    {4 * kDay + 170, kHarbor, kMariner, L"Fits. I keep it for you."},
    {2 * kDay + 610, kHarbor, kMariner, L"quay.png", biz::kMsgPicture},
    {2 * kDay + 608, kHarbor, kMariner, L"Your place is the one to the left of the tower \u2693"},
    {2 * kDay + 590, kMariner, kHarbor, L"Спасибо, вижу. До пятницы!"},
    {kDay + 300, kHarbor, kMariner, L"rules.txt", biz::kMsgFile},
    {kDay + 298, kHarbor, kMariner, L"Tide table and harbour rules, in case you arrive at night."},
    {kDay + 280, kMariner, kHarbor, L"bell.wav", biz::kMsgAudio},
    {kDay + 279, kMariner, kHarbor, L"Is this the bell I should listen for?"},
    {kDay + 270, kHarbor, kMariner, L"Yes! Two strokes, then a pause."},
    {25, kHarbor, kMariner, L"Fog warning for tonight \U0001F32B\uFE0F keep to the outer channel.",
     biz::kMsgText, true},

    {5 * kDay + 33, kLighthouse, kMariner, L"שלום! I saw your sail from the gallery today."},
    {5 * kDay + 20, kMariner, kLighthouse, L"And I your light \U0001F44B"},
    {3 * kDay + 500, kMariner, kLighthouse, L"霧の日も見えますか？"},
    {3 * kDay + 480, kLighthouse, kMariner, L"Not far. In fog listen for the bell:"},
    {3 * kDay + 479, kLighthouse, kMariner, L"bell.wav", biz::kMsgAudio},
    {2 * kDay + 77, kMariner, kLighthouse, L"passage.txt", biz::kMsgFile},
    {2 * kDay + 70, kMariner, kLighthouse, L"My tide notes. Do they agree with yours?"},
    {2 * kDay + 40, kLighthouse, kMariner, L"To the minute \U0001F4AF"},
    {130, kLighthouse, kMariner, L"beam.png", biz::kMsgPicture, true},
    {128, kLighthouse, kMariner, L"Look for this one tonight.", biz::kMsgText, true},

    {4 * kDay + 610, kHarbor, kTribe,
     L"Ahoy everybody! One place for what concerns all three of us."},
    {4 * kDay + 604, kLighthouse, kTribe, L"Good idea. The light wishes a calm week \U0001F305"},
    {4 * kDay + 590, kMariner, kTribe, L"And the sea promises nothing \u2693"},
    {3 * kDay + 120, kHarbor, kTribe, L"watch.txt", biz::kMsgFile},
    {3 * kDay + 118, kHarbor, kTribe,
     L"The week's tides, so that we plan the regatta with one table."},
    {3 * kDay + 101, kMariner, kTribe,
     L"Saturday before eleven, then. Later there is no water at the start."},
    {3 * kDay + 98, kLighthouse, kTribe, L"I fire the starting gun from the gallery \U0001F4A5"},
    {2 * kDay + 330, kLighthouse, kTribe, L"start.wav", biz::kMsgAudio},
    {2 * kDay + 328, kLighthouse, kTribe, L"No gun to be had. You will have to start by the bell."},
    {2 * kDay + 300, kMariner, kTribe, L"Zvon je lepší \U0001F514 even my crew wakes up from it"},
    {kDay + 420, kMariner, kTribe, L"course.png", biz::kMsgPicture},
    {kDay + 418, kMariner, kTribe, L"The last leg goes past the tower and into the sun."},
    {kDay + 400, kHarbor, kTribe, L"好！ I put out the buoys on Friday evening."},
    {31, kLighthouse, kTribe, L"With this fog: do we move the start?", biz::kMsgText, true},
    {29, kMariner, kTribe, L"Let us see at six, with the bell.", biz::kMsgText, true},

    {6 * kDay, L"system", kHarbor, L"Welcome! Your messages are kept on this machine only.",
     biz::kMsgText, true, biz::kCIDSystem},
    {kDay + 30, L"coastguard", kHarbor, L"Weather for the coast: fog from the west by evening.",
     biz::kMsgText, true, biz::kCIDSubscribe},
};

}  // namespace

std::span<const ScriptLine> Script() { return kLines; }

const wchar_t* TribeName() { return L"Regatta"; }

const char* FileText() {
  return "Tides at the pier\n"
         "=================\n\n"
         "day        high   low    high   low\n"
         "Monday     01:12  07:25  13:38  19:51\n"
         "Tuesday    01:58  08:11  14:22  20:37\n"
         "Wednesday  02:41  08:56  15:07  21:21\n"
         "Thursday   03:25  09:40  15:51  22:06\n"
         "Friday     04:10  10:26  16:38  22:54\n"
         "Saturday   04:58  11:15  17:29  23:46  spring tide\n"
         "Sunday     05:51  12:09  18:25\n\n"
         "Heights are above chart datum; wind from the west adds up to half a metre.\n";
}

}  // namespace imsdk::demo
