// Events (WinEvents) that tell assistive technology that what the popup shows has changed. Each is sent for
// the client area or a control of it, when the change is on the screen. Window thread only.
#pragma once

// The popup has been shown or hidden. Does nothing if that has been announced already.
void AnnouncePopup(bool shown);

// The popup has been painted: announces what differs from what was announced before. A step of a drag that
// changes no text announces nothing. Does nothing while the popup is hidden.
void AnnouncePanel();
