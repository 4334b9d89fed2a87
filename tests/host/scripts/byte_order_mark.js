#!/usr/bin/env mirolta-host
// The report is in the file with the extension errors.
// status: 1
throw new Error(1, "here");
