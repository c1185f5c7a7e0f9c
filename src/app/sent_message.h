// Messages that must be posted because COM rejects outgoing calls while the thread handles another thread's
// SendMessage.
#pragma once

// Whether the handler runs inside a message that another thread sent, so that the WMI calls of built-in
// panels would fail. The handler then posts its message again and returns. False while a message box is open:
// if a sent message opened it, each posted message would again arrive inside that message, without end.
bool ShouldPostAgain();
