// The COM object through which assistive technology reads and operates the popup.
#pragma once

struct IAccessible;

// Creates an IAccessible for the popup's client area, with one reference. Null if memory runs out. The
// controls are its simple elements, numbered from 1 in reading order. It reads AppState on each call, on the
// window thread. A client may keep it after the window is destroyed; its methods then return
// CO_E_OBJNOTCONNECTED.
IAccessible* CreateAccessibleObject();
