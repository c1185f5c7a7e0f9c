// Takes the PWM-safe controller's place in a test program: a line "pwm ..." in the record for each call.
#pragma once

#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_pwm_safe);

// Called once, by the next look at the displays, as a message that is dispatched while they answer.
extern void (*g_whileDisplaysAnswer)();
