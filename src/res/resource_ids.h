/* Resource ids, shared by ambrel.rc and the C++ sources. */
#pragma once

#define IDI_APPLICATION_WINDOW 101
#define IDI_TRAY_OFF 102
#define IDI_TRAY_ON 103
#define IDR_LOGO_PNG 201
