// Replaces the PWM-safe controller in a test program. Records each call as "pwm ...".
#pragma once

#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_pwm_safe);

// Runs once, during the next display query, like a message that is dispatched while the displays answer.
extern void (*g_whileDisplaysAnswer)();
