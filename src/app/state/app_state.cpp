#include "app/state/app_state.h"

AppState g_app;
