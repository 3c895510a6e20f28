// Resets the addresses that the services keep, between tests.
#pragma once

/// Make the services and the length method look up their functions again.
void forgetServices();
