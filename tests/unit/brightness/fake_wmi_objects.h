// The objects of the fake WMI. None is ever deleted, so that a surplus release is detected.
#pragma once

#include "brightness/fake_wmi.h"

IWbemLocator* CreateLocator();

// The services object of the latest connection.
IUnknown* LatestServices();

// The number of objects that have not been released.
int ObjectsAlive();

// Sets that number to 0.
void ResetObjects();
