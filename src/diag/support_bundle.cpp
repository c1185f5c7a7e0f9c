#include "diag/support_bundle.h"

#include "app/state/app_state.h"
#include "diag/support_facts.h"
#include "diag/support_text.h"

std::wstring BuildSupportBundle() {
    return SupportBundleText(g_app, ReadSupportFacts());
}

std::wstring BuildSupportSubject() {
    return SupportSubjectText(ReadSupportFacts());
}
