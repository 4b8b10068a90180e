#pragma once

#include "dataset/ClientDataSet.h"
#include "screens/ScreenFixture.h"

#include <span>

namespace Qel {
class TFrmBaseForm;
}

namespace Qel::Test {

/// What a dialog of the walk is opened on: the scripted server and a table that it may be handed.
class WalkStage : public ScreenFixture
{
public:
    ClientDataSet table;
};

/// A dialog and how to make it. Statements that it sends while it is made or shown are scripted on
/// the stage; whatever else it asks is answered with no rows.
struct WalkedDialog
{
    const char *className;
    TFrmBaseForm *(*make)(WalkStage &stage);
};

/// Every form that is not in the registry. A class that is in neither fails the walk.
std::span<const WalkedDialog> WalkedDialogs();

} // namespace Qel::Test
