#pragma once

#include <windows.h>

#include <wbemcli.h>

// Creates the connection to ROOT\WMI, with one reference. It also implements IClientSecurity, without which
// CoSetProxyBlanket fails.
IWbemServices* CreateServices();
