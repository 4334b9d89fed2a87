' Every class as VBScript sees it: errors, default members, optional arguments, values by reference,
' objects bound with Set. The last line says that the script got there.
Option Explicit

Sub Say(text)
  WScript.Echo text
End Sub

' What the last call left in Err.
Sub SayError(what)
  Say what & ": " & Hex(Err.Number) & " [" & Err.Description & "] [" & Err.Source & "]"
  Err.Clear
End Sub

' A variable passes its value by reference, which numbers do not follow; a result is the value.
Function ValueOf(variable)
  ValueOf = variable
End Function

Function HexOf(value)
  Dim number
  Set number = CreateObject("Vardeko.crypt.Number")
  number.Binary = ValueOf(value)
  HexOf = number.Hex
End Function

Function FromHex(text)
  Dim number
  Set number = CreateObject("Vardeko.crypt.Number")
  number.Hex = ValueOf(text)
  FromHex = number.Binary
End Function

Function Euro
  Dim number
  Set number = CreateObject("Vardeko.crypt.Number")
  number.Hex = "e282ac"
  Euro = number.Text(65001)
End Function

' A caller's variable arrives at the members by reference.
Function DigestOf(hash, text)
  hash.HashData text
  DigestOf = hash.Value
End Function

Dim stem, form
For Each stem In Array("HashObject", "Symmetric", "Number", "RSA", "ToviStreamDigest", _
                       "ToviStreamCrypt")
  For Each form In Array("", ".1", ".free", ".free.1")
    Say stem & form & " " & IsObject(CreateObject("Vardeko.crypt." & stem & form))
  Next
Next

Say "-- digests"
Dim hash, text, bytes
Set hash = CreateObject("Vardeko.crypt.HashObject")
On Error Resume Next
hash.HashData "abc"
SayError "HashData"
hash.InitHash "sha256"
SayError "InitHash"
hash.InitHash "SHA256"
SayError "InitHash"
On Error Goto 0
hash.HashData "abc"
Say hash
Say hash.Value
text = "abc"
Say DigestOf(hash, text)
bytes = hash.BinaryValue
Say VarType(bytes)
hash.HashData bytes
Say hash.Value
hash.HashData Euro, 65001
Say hash.Value
hash.codePage = 65001
hash.HashData Euro
Say hash.Value & " " & hash.codePage
hash.Key = "key"
hash.HashUpdate "The quick brown fox "
hash.HashUpdate "jumps over the lazy dog"
hash.HashFinalize
Say hash.Value
Say HexOf(hash.Key)
hash.ResetKey
hash.HashData 1.5
Say hash.Value
hash.HashData True
Say Len(hash.Value)
On Error Resume Next
hash.HashData Null
SayError "Null"
hash.HashData hash
SayError "an object with a default value"
hash.HashData Nothing
SayError "no object"
hash.NoSuch
Say "no such member: " & (Err.Number <> 0)
Err.Clear
On Error Goto 0

Say "-- ciphers"
Dim crypt, block
Set crypt = CreateObject("Vardeko.crypt.Symmetric")
On Error Resume Next
crypt.Key = "0123456789abcdef"
SayError "Key"
crypt.Init "AES"
block = crypt.Encrypt("x")
SayError "Encrypt"
On Error Goto 0
crypt.Key = FromHex("2b7e151628aed2a6abf7158809cf4f3c")
block = crypt.Encrypt(FromHex("6bc1bee22e409f96e93d7e117393172a"))
Say HexOf(block)
Say HexOf(crypt.Decrypt(block))
block = crypt.Encrypt("0123456789", False)
Say HexOf(crypt.Encrypt("012345"))
Say crypt.BlockSize & " " & crypt.PadType
crypt.Reset
crypt.ResetKey
On Error Resume Next
block = crypt.Decrypt(block)
SayError "Decrypt"
On Error Goto 0

Say "-- numbers"
Dim n, m
Set n = CreateObject("Vardeko.crypt.Number")
n.Value = "123456789012345678901234567890"
n.Inc
n.Inc 9
n.Dec
Say n
Set m = n.Mul(n.Add(0))
Say m
Say m.Div(n.Add(0))
Say m.Mod(1000)
Say n.Cmp(m.Add(0)) & n.Cmp(n.Add(0)) & m.Cmp(n.Add(0))
Say n.NewNumber.Cmp(0)
Say n.NewNumber(42).ModExp(65537, "1000000007").Hex
n.Text(65001) = Euro
Say n.Hex & " " & (n.Text(65001) = Euro) & " " & Len(n.Text(65001))
m = "5"
On Error Resume Next
Say n.Add(m)
Say "by reference: " & Hex(Err.Number)
Err.Clear
On Error Goto 0
Say n.Add(ValueOf(m))
n.Value = "77"
Say n & " " & n.Hex
On Error Resume Next
Set m = n.Div(0)
Say "division: " & Hex(Err.Number)
Err.Clear
On Error Goto 0

Say "-- keys"
Dim rsa, cipher
Set rsa = CreateObject("Vardeko.crypt.RSA")
On Error Resume Next
cipher = rsa.Encrypt("x")
SayError "Encrypt"
On Error Goto 0
rsa.CreateKeys "c0000000000000000000000000000000", "f0000000000000000000000000000000"
Say HexOf(rsa.Modulus) & " " & HexOf(rsa.PublicExp) & " " & rsa.BlockSize
cipher = rsa.Encrypt(FromHex("123456789abcdef"))
Say HexOf(rsa.Decrypt(ValueOf(cipher))) & " " & HexOf(rsa.DecryptPQ(ValueOf(cipher)))
rsa.CreateRandKeys
Say "long enough: " & (Len(HexOf(rsa.Modulus)) >= 64)
rsa.CreateRandKeys 24, True
Say Len(HexOf(rsa.Modulus)) & " " & rsa.BlockSize

Say "-- filters"
Dim digest, filter
Set digest = CreateObject("Vardeko.crypt.ToviStreamDigest")
Set filter = CreateObject("Vardeko.crypt.ToviStreamCrypt")
On Error Resume Next
Set filter.Stream = hash
SayError "Stream"
Set m = filter.Stream
SayError "Stream"
filter.WriteAlgorithm = "aes"
SayError "WriteAlgorithm"
Set filter.Stream = digest
SayError "Stream"
On Error Goto 0
Say "the same: " & (filter.Stream Is digest)
digest.WriteAlgorithm = "SHA1"
Say digest.WriteAlgorithm & " " & digest.WriteHashEnable & " " & digest.ReadHashEnable
digest.WriteHashEnable = False
Say "" & digest.WriteHashEnable
digest.WriteKey = "key"
Say HexOf(digest.WriteKey)
Say digest.WriteValue
Say Len(HexOf(digest.WriteBinaryValue))
filter.ReadAlgorithm = "DES"
filter.ReadKey = FromHex("133457799bbcdff1")
filter.ReadPadType = -1
Say filter.ReadAlgorithm & " " & HexOf(filter.ReadKey) & " " & filter.ReadPadType & " " & _
    filter.ReadDecrypt & " " & filter.SeekingForbidden
filter.ReadReset
filter.ReadResetKey
filter.ReadFinalize
Say "the end"
