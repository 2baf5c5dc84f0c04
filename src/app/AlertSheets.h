#pragma once
#include "model/CommandResult.h"

class QWidget;

namespace pelorin {

// A user mistake as a sheet on the window: the fixed message, its informative text and a single
// " Ok " button. Does not block; the sheet closes itself.
void showAlertSheet(QWidget* window, const Alert& alert);

// "Are you sure you want to Exit ?" with " Exit " and "Cancel"; true when the user chose to exit.
bool confirmExit(QWidget* window);

}  // namespace pelorin
