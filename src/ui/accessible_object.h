// The COM object through which assistive technology reads and operates the popup.
#pragma once

struct IAccessible;

// An IAccessible for the popup's client area, with one reference; null when memory runs out. The controls are
// its simple elements, numbered from 1 in reading order. It reads AppState at each call and belongs to the
// window's thread. A client may keep it longer than the window lives: it then answers CO_E_OBJNOTCONNECTED.
IAccessible* CreateAccessibleObject();
