#pragma once

// The steps between the creation of the application object and its window.

class QApplication;

namespace Startup {

// Attributes that must be set before the application object exists.
void setAttributes();

// Name, version, icon, font, translation, text codec, folders, settings, skin.
void prepare(QApplication &application);

// Lets the unpacker remove what an update left: on Windows it can't remove the
// program that it is itself.
void removeUpdateRemains();

} // namespace Startup
