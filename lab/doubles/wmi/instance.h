#pragma once

#include "../hardware/script.h"

#include <windows.h>

#include <wbemcli.h>

// Each returns a new object with one reference.

// What the brightness query finds: a panel with its InstanceName and CurrentBrightness of this moment.
IWbemClassObject* MakeBrightnessInstance(const Row& panel);
// What the methods query finds: a panel with its InstanceName and __PATH.
IWbemClassObject* MakeMethodsInstance(const Row& panel);
// The class WmiMonitorBrightnessMethods.
IWbemClassObject* MakeMethodsClass();
// An instance of WmiSetBrightness's in-parameters.
IWbemClassObject* MakeInParameters();

// What was put into in-parameters made here. A number is -1 until it has been put.
struct InParameters {
    LONG64 timeout;
    LONG64 brightness;
};

// False when the object is not one of the double's in-parameters.
bool ReadInParameters(IWbemClassObject* object, InParameters& found);
