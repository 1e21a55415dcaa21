#include "publish/commands.h"

#include "publish/answer.h"
#include "publish/command_runs.h"
#include "publish/publish_texts.h"

namespace publish {

tools::Program MakeProgram() {
  return {"tmpublish",
          texts::kHelpHead,
          texts::kHelpTail,
          {{texts::kPublish, RunPublish},
           {texts::kAnnounce, RunAnnounce},
           {texts::kRetract, RunRetract},
           {texts::kRenew, RunRenew},
           {texts::kPrune, RunPrune},
           {texts::kCheck, RunCheck},
           {texts::kDiff, RunDiff},
           {texts::kKeygen, RunKeygen}},
          true,
          kFailed};
}

}  // namespace publish
