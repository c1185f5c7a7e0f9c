// The objects of the fake WMI. None is ever deleted, so that a release too many is seen.
#pragma once

#include "brightness/fake_wmi.h"

IWbemLocator* MakeLocator();

// The connection that was handed out last.
IUnknown* LatestServices();

int ObjectsAlive();
void ForgetObjects();
