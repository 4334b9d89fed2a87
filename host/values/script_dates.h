// Dates of the script's calendar and of automation's.
#pragma once

namespace mirolta::host {

// AutomationDate and ScriptMilliseconds convert between automation's local time, days since 30
// December 1899, and the script's UTC milliseconds since 1 January 1970.
// Shapes: before 30 December 1899 the whole days of an automation date are negative, and its
//         fraction still counts forward from midnight: -1.25 is 29 December 1899, 6:00.
double AutomationDate(double script_milliseconds);
double ScriptMilliseconds(double automation_date);

// UtcOfLocal converts local milliseconds since 1 January 1970 to UTC.
double UtcOfLocal(double local_milliseconds);

// IsAutomationDate returns whether automation has the date: years 100 to 9999.
bool IsAutomationDate(double script_milliseconds);

}  // namespace mirolta::host
