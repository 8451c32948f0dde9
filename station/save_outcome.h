// What became of the settings when the setup dialog was left.
#pragma once

namespace ostrel {

enum class SaveOutcome {
  kHidden,        // in force, and the dialog is out of sight
  kFocusLogSize,  // refused: `txtLogSize` is no number, and the dialog shows it
};

}  // namespace ostrel
