
// The platform's values.

/** An object of a class that a script creates by its ProgID. */
declare class AutomationObject {
  protected constructor();
  private automationObject: never;
}

/** An object whose elements an Enumerator goes through. */
declare class AutomationCollection<Element> extends AutomationObject {
  private constructor();
  private automationElement: Element;
}

/** An array of automation. A VBArray reads it. */
declare class SafeArray<Element = any> {
  protected constructor();
  private safeArrayElement: Element;
}

/** An array of bytes, as the classes return it. Scripts read and write it by Bytes. */
declare class ByteArray extends SafeArray<number> {
  private constructor();
  private byteArray: never;
}

/** Bytes as the classes take them: mirolta-host also takes the arrays of its engine. */
type AnyBytes = ByteArray | Uint8Array | ArrayBuffer;

/** A date of automation: new Date(value) converts it. */
declare class VarDate {
  private constructor();
  private varDate: never;
}

/** What members take whose type is Variant. */
type Variant =
  string | number | boolean | Date | VarDate | AnyBytes | SafeArray | AutomationObject | null | undefined;

// Classes by ProgID.

/** The class of a ProgID, in the letter case of ActiveXObjectNameMap or in another one. */
type ActiveXObjectOf<ProgID extends string> = {
  [Name in keyof ActiveXObjectNameMap as Lowercase<Name>]: ActiveXObjectNameMap[Name]
}[Lowercase<ProgID> & Lowercase<keyof ActiveXObjectNameMap>];

interface ActiveXObject {
  /** Creates an object of the class with this ProgID. */
  new <ProgID extends keyof ActiveXObjectNameMap>(progid: ProgID, server?: string): ActiveXObjectNameMap[ProgID];
  /** Creates an object of the class with this ProgID, in any letter case. */
  new <ProgID extends string>(
    progid: Lowercase<ProgID> extends Lowercase<keyof ActiveXObjectNameMap> ? ProgID : never,
    server?: string): ActiveXObjectOf<ProgID>;
  /** Creates an object of another class. */
  new (progid: string, server?: string): any;
}
declare var ActiveXObject: ActiveXObject;

/** Creates an object of the class, GetObject("", progid). Only the platform's host opens files and monikers. */
declare function GetObject<ProgID extends keyof ActiveXObjectNameMap>(
  path: "", progid: ProgID): ActiveXObjectNameMap[ProgID];
/** Creates an object of the class, GetObject("", progid). Only the platform's host opens files and monikers. */
declare function GetObject(path: string, progid?: string): any;

// The script host.

declare namespace WScript {
  interface Host {
    /** WScript itself. */
    readonly Application: Host;
    /** The arguments of the script. */
    readonly Arguments: WScript.Arguments;
    /** The version of mirolta-host as a number: 10203 for 1.2.3. */
    readonly BuildVersion: number;
    /** The path of the host's program. */
    readonly FullName: string;
    /** Whether Echo and reports of errors print; it can be assigned. */
    Interactive: boolean;
    /** The name of the host. */
    readonly Name: string;
    /** The folder of the host's program. */
    readonly Path: string;
    /** The path of the script. */
    readonly ScriptFullName: string;
    /** The name of the script's file. */
    readonly ScriptName: string;
    /** Standard error. */
    readonly StdErr: Scripting.TextStream;
    /** Standard input. */
    readonly StdIn: Scripting.TextStream;
    /** Standard output. */
    readonly StdOut: Scripting.TextStream;
    /** The seconds after which the script is ended, counted from the assignment; 0 for no limit. */
    Timeout: number;
    /** The version of the platform's host with these members. */
    readonly Version: string;
    /** Events of objects: refused by mirolta-host. */
    ConnectObject(object: AutomationObject, prefix: string): void;
    /** Creates an object of the class with this ProgID; a prefix for events is refused by mirolta-host. */
    CreateObject<ProgID extends keyof ActiveXObjectNameMap>(
      progid: ProgID, prefix?: string): ActiveXObjectNameMap[ProgID];
    /** Creates an object of the class with this ProgID; a prefix for events is refused by mirolta-host. */
    CreateObject(progid: string, prefix?: string): any;
    /** Events of objects: refused by mirolta-host. */
    DisconnectObject(object: AutomationObject): void;
    /** Prints the values on a line, separated by spaces. */
    Echo(...values: any[]): void;
    /** The text of an environment variable, undefined if it is not set. Only mirolta-host has it. */
    EnvironmentVariable(name: string): string | undefined;
    /** Creates an object of the class, GetObject("", progid). */
    GetObject<ProgID extends keyof ActiveXObjectNameMap>(
      path: "", progid: ProgID, prefix?: string): ActiveXObjectNameMap[ProgID];
    /** Creates an object of the class, GetObject("", progid). */
    GetObject(path: string, progid?: string, prefix?: string): any;
    /** Whether two paths lead to one file. Only mirolta-host has it. */
    IsSameFile(a: string, b: string): boolean;
    /** A stream of bytes in memory, with these bytes. Only mirolta-host has it. */
    MemoryStream(bytes?: AnyBytes): WScript.ByteStream;
    /** Opens a file as a stream of bytes; a new file replaces the old one when it is closed. Only mirolta-host has it. */
    OpenFile(path: string, mode?: "r" | "r+" | "w" | "w+" | "wx", isPrivate?: boolean): WScript.ByteStream;
    /** Ends the script with an exit status. */
    Quit(status?: number): never;
    /** Waits. */
    Sleep(milliseconds: number): void;
    /** The bytes of an object that is a stream, such as a stream filter. Only mirolta-host has it. */
    StreamOf(object: AutomationObject): WScript.ByteStream;
    /** The name of the host. */
    toString(): string;
  }

  /** A stream of bytes of mirolta-host. Stream filters take it as their Stream. */
  interface ByteStream extends AutomationObject {
    /** The current position. */
    readonly Position: number;
    /** The number of bytes. */
    readonly Size: number;
    /** Closes the stream; a new file takes the place of the old one. */
    Close(): void;
    /** Writes what the stream holds back. */
    Commit(): void;
    /** Copies up to count bytes to another stream, all without a count; the number of bytes copied. */
    CopyTo(stream: ByteStream, count?: number): number;
    /** Closes the stream and drops a new file. */
    Discard(): void;
    /** The next bytes, none at the end. */
    Read(count?: number): Uint8Array;
    /** Moves from the start (origin 0), the position (1) or the end (2); the new position. */
    Seek(position: number, origin?: 0 | 1 | 2): number;
    /** Writes bytes; the number written. */
    Write(bytes: AnyBytes): number;
    /** The name of the stream's class. */
    toString(): string;
  }
}
/** The script host. */
declare var WScript: WScript.Host;

// Bytes for scripts: lib/bytes.js, which mirolta-host has built in.

interface BytesFunctions {
  /** The parts one after the other. */
  Concat(...parts: AnyBytes[]): ByteArray;
  /** The number of bytes. */
  Count(bytes: AnyBytes): number;
  /** Whether two arrays have the same bytes; looks at all bytes wherever they differ. */
  Equal(a: AnyBytes, b: AnyBytes): boolean;
  /** The bytes of an array of whole numbers from 0 to 255. */
  FromArray(numbers: number[]): ByteArray;
  /** The bytes of base64 with padding; white space is skipped. */
  FromBase64(text: string): ByteArray;
  /** The bytes of hexadecimal digits in both letter cases; white space between bytes is skipped. */
  FromHex(text: string): ByteArray;
  /** The text in a code page, UTF-8 (65001) if it is omitted. */
  FromText(text: string, codePage?: number): ByteArray;
  /** Bytes from the system's cryptographic source, up to 16,777,216. */
  Random(count: number): ByteArray;
  /** A copy of a part; start and end as for an array: below 0 from the end, omitted for all. */
  Slice(bytes: AnyBytes, start?: number, end?: number): ByteArray;
  /** The bytes as an array of numbers. */
  ToArray(bytes: AnyBytes): number[];
  /** The bytes as base64 on one line, with padding. */
  ToBase64(bytes: AnyBytes): string;
  /** The bytes as lowercase hexadecimal digits. */
  ToHex(bytes: AnyBytes): string;
  /** The text that the bytes are in a code page, UTF-8 (65001) if it is omitted. */
  ToText(bytes: AnyBytes, codePage?: number): string;
  /** The exclusive or of two arrays of the same count. */
  Xor(a: AnyBytes, b: AnyBytes): ByteArray;
}
/** Text, hexadecimal and base64 to bytes and back. */
declare var Bytes: BytesFunctions;

// What the script language has beyond its standard.

interface Enumerator<Element = any> {
  /** Whether there is no element left. */
  atEnd(): boolean;
  /** The current element. */
  item(): Element;
  /** Goes to the first element. */
  moveFirst(): void;
  /** Goes to the next element. */
  moveNext(): void;
}
interface EnumeratorConstructor {
  /** Goes through the elements of a collection. */
  new <Element>(collection: AutomationCollection<Element>): Enumerator<Element>;
  /** Goes through the elements of a collection. */
  new (collection: AutomationObject): Enumerator<any>;
  readonly prototype: Enumerator<any>;
}
declare var Enumerator: EnumeratorConstructor;

interface VBArray<Element = any> {
  /** The number of dimensions. */
  dimensions(): number;
  /** An element, with an index for each dimension. */
  getItem(index: number, ...indices: number[]): Element;
  /** The lowest index of a dimension, of the first without an argument. */
  lbound(dimension?: number): number;
  /** The elements as an array of the script language. */
  toArray(): Element[];
  /** The highest index of a dimension, of the first without an argument. */
  ubound(dimension?: number): number;
}
interface VBArrayConstructor {
  /** Reads an array of automation. */
  new <Element>(array: SafeArray<Element>): VBArray<Element>;
  /** Reads an array of bytes. */
  new (array: Uint8Array): VBArray<number>;
  readonly prototype: VBArray<any>;
}
declare var VBArray: VBArrayConstructor;

/** Frees objects that nothing refers to. */
declare function CollectGarbage(): void;
/** The name of the script language, "JScript". */
declare function ScriptEngine(): string;
/** The version of the host that runs the script. */
declare function ScriptEngineBuildVersion(): number;
/** The version of the language, 5 of 5.8. */
declare function ScriptEngineMajorVersion(): number;
/** The version of the language, 8 of 5.8. */
declare function ScriptEngineMinorVersion(): number;

interface Error {
  /** The number of the error; of a member's error its status. */
  number: number;
  /** The text of the error. */
  description: string;
  /** The file of the script. Only mirolta-host has it. */
  fileName?: string;
  /** The line in the script. Only mirolta-host has it. */
  lineNumber?: number;
}
interface ErrorConstructor {
  /** An error with number and text. */
  new (number: number, description?: string): Error;
  /** An error with number and text. */
  (number: number, description?: string): Error;
}

interface Date {
  /** The date for members of objects. */
  getVarDate(): VarDate;
  /** The year; use getFullYear. */
  getYear(): number;
}
interface DateConstructor {
  /** The date of a member's value. */
  new (value: VarDate): Date;
}
