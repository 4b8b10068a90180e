#pragma once

namespace Qel {

/// Registers the nine screens in the order of the host's menu.
void RegisterForms();

} // namespace Qel
