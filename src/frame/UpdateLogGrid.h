#pragma once

namespace Qel {

class ClientDataSet;
class DataGrid;

/// Makes a grid the list that both log viewers show: who did what to a record and when. An
/// operation outside its value list shows no text.
void SetUpUpdateLogGrid(DataGrid &grid, ClientDataSet &log);

} // namespace Qel
