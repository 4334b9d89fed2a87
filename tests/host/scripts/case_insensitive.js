// arguments: x
wscript = WScript;
wscript.echo("echo", WScript.ARGUMENTS.LENGTH, WScript.arguments(0), WScript.Arguments.ITEM(0));
WScript.stdout.writeline(WScript.scriptname);
WScript.quit(0);
