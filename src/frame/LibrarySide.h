#pragma once

#include "frame/LibraryTypes.h"

#include <exception>
#include <functional>

namespace Qel {

// The library's one set of globals. User-interface thread only; written at load and by LibInit.

/// Makes the globals. At load, before the object that ends them: they have to outlive it.
void CreateLibrarySide();

/// Owner of the screens: the host's main window after LibInit, before that (or when the host has
/// destroyed it) a widget of the library's own that is never shown.
QWidget *Application();
QScreen *Screen();

/// What a dialog or message box belongs to: the modal window in front, else the application's
/// window if it is shown, else nothing.
QWidget *DialogOwner();

const TRunParam &RunParam();
const TServerURL &ServerURL();
qint32 HostValue();

void SetRunParam(const TRunParam &value);
void SetServerURL(const QString &base);
void SetHostValue(qint32 value);

/// Remembers the objects in force and puts the host's in their place. A second call remembers
/// the first host's.
void SwapHostObjects(const THostObjects &host);
/// Puts back what the last SwapHostObjects remembered.
void RestoreHostObjects();
/// Frees the library's own owner and with it the screens that were opened before LibInit.
void FreeOwnApplication();

/// Hands an error to the host's error handling: the application object's invokable
/// HandleException(QString), with the message and, after an empty line, the details. Without one
/// an error box shows the message. Never throws.
void HandleException(const std::exception &error);
/// The same for the exception being handled, whatever it is.
void HandleCurrentException();

/// Runs an export's work. What it raises leaves as an EQelError whose text is what HandleException
/// hands over: the message and, after an empty line, the details.
void RunForHost(const std::function<void()> &work);

/// A copy that shares no memory with this module's literals: for texts that the host keeps.
QString Detached(const QString &text);

} // namespace Qel
