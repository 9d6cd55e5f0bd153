#pragma once

/// Ends the process that started this one, as a power cut would.
void KillParent();
