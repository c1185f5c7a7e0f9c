#pragma once

#include <windows.h>

#include <wbemcli.h>

// The connection to ROOT\WMI, a new object with one reference. It also answers IClientSecurity, without which
// CoSetProxyBlanket fails.
IWbemServices* MakeServices();
