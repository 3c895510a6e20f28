// The process-wide pointers behind the services, forgotten again between tests.
#pragma once

/// Have every service, and the length method, looked up again on its next use.
void forgetServices();
