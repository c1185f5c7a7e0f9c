#pragma once

#include "../hardware/script.h"

#include <windows.h>

#include <wbemcli.h>

// Each returns a new object with one reference.

// A result of the brightness query: a panel with its InstanceName and its current CurrentBrightness.
IWbemClassObject* CreateBrightnessInstance(const Row& panel);

// A result of the methods query: a panel with its InstanceName and __PATH.
IWbemClassObject* CreateMethodsInstance(const Row& panel);

// The class WmiMonitorBrightnessMethods.
IWbemClassObject* CreateMethodsClass();

// An instance of WmiSetBrightness's in-parameters.
IWbemClassObject* CreateInParameters();

// The values that were put into in-parameters; -1 for one that has not been put.
struct InParameters {
    LONG64 timeout;
    LONG64 brightness;
};

// False if CreateInParameters did not create the object.
bool ReadInParameters(IWbemClassObject* object, InParameters& found);
