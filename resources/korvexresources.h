#pragma once

// Registers the compiled-in resources (":/resources/..."). A static library's
// resources are dropped by the linker unless something refers to them, so the
// program and every test that needs them call this once.
void initKorvexResources();
