// Events (WinEvents) that report changes of the popup to assistive technology. Each is sent for the client
// area or one of its controls, after the change is displayed. Window thread only.
#pragma once

// The popup has been shown or hidden. Does nothing if that has been announced already.
void AnnouncePopup(bool shown);

// The popup has been painted: announces the differences from the state that was announced last. A step of a
// drag that changes no text announces nothing. Does nothing while the popup is hidden.
void AnnouncePanel();

// A message box has disabled or enabled the popup (WM_ENABLE): announces the state of the popup and of each
// control. Does nothing while the popup is hidden.
void AnnounceEnabling();
