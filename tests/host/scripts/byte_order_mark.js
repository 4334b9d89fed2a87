#!/usr/bin/env mirolta-host
// errors: .*byte_order_mark\.js\(4\): .*: here
// status: 1
throw new Error(1, "here");
