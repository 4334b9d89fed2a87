// Tests every algorithm through the public classes, with published answers, and prints a table.
//
//   selftest.js
//
// The exit status is 1 if a case failed; what was expected then follows the table. The script needs the
// classes only. The stream filters need a host that gives scripts streams (WScript.MemoryStream); on
// others, such as the platform's own, their rows say that they were not tested.

// Where Bytes is not built in it is read from the library.
if (!("Bytes" in this)) {
  eval(new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(
    WScript.ScriptFullName.replace(/[^\\\/]*$/, "..\\lib\\bytes.js")).ReadAll());
}

// Messages, how often they are repeated, and digests.
// RFC 1321, A.5; FIPS 180-2, C.3, for this digest.
var MD5 = [
    " 1 d41d8cd98f00b204e9800998ecf8427e",
    "61 1 0cc175b9c0f1b6a831c399e269772661",
    "616263 1 900150983cd24fb0d6963f7d28e17f72",
    "6d65737361676520646967657374 1 f96b697d7cb7938d525a2f31aaf161d0",
    "6162636465666768696a6b6c6d6e6f707172737475767778797a 1 c3fcd3d76192e4007dfb496cca67e13b",
    "4142434445464748494a4b4c4d4e4f505152535455565758595a6162636465666768696a6b6c6d6e6f7071727374" +
    "75767778797a30313233343536373839 1 d174ab98d277d9f5a5611c2c9f419d9f",
    "31323334353637383930313233343536373839303132333435363738393031323334353637383930313233343536" +
    "37383930313233343536373839303132333435363738393031323334353637383930 1 57edf4a22be3c955ac49d" +
    "a2e2107b67a",
    "61 1000000 7707d6ae4e027c70eea2a935c2296f21"];
// FIPS 180-2, appendix A; NIST CAVP, SHA1ShortMsg.
var SHA1 = [
    "616263 1 a9993e364706816aba3e25717850c26c9cd0d89d",
    "6162636462636465636465666465666765666768666768696768696a68696a6b696a6b6c6a6b6c6d6b6c6d6e6c6d" +
    "6e6f6d6e6f706e6f7071 1 84983e441c3bd26ebaae4aa1f95129e5e54670f1",
    "61 1000000 34aa973cd4c4daa4f61eeb2bdbad27316534016f",
    " 1 da39a3ee5e6b4b0d3255bfef95601890afd80709",
    "36 1 c1dfd96eea8cc2b62785275bca38ac261256e278",
    "195a 1 0a1c2d555bbe431ad6288af5a54f93e0449c9232"];
// FIPS 180-2, appendix B; NIST CAVP, SHA256ShortMsg.
var SHA256 = [
    "616263 1 ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad",
    "6162636462636465636465666465666765666768666768696768696a68696a6b696a6b6c6a6b6c6d6b6c6d6e6c6d" +
    "6e6f6d6e6f706e6f7071 1 248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1",
    "61 1000000 cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0",
    " 1 e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855",
    "d3 1 28969cdfa74a12c82f3bad960b0b000aca2ac329deea5c2328ebc6f2ba9802c1",
    "11af 1 5ca7133fa735326081558ac312c620eeca9970d1e70a4b95533d956f072d1f98"];

// Keys, messages and codes: RFC 2202, sections 2 and 3; RFC 4231, section 4.
var HMAC_MD5 = [
    "0b0b0b0b0b0b0b0b0b0b0b0b0b0b0b0b 4869205468657265 9294727a3638bb1c13f48ef8158bfc9d",
    "4a656665 7768617420646f2079612077616e7420666f72206e6f7468696e673f 750c783e6ab0b503eaa86e310a" +
    "5db738",
    "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa ddddddddddddddddddddddddddddddddddddddddddddddddddddddddddd" +
    "ddddddddddddddddddddddddddddddddddddddddd 56be34521d144c88dbb8c733f0e8b3f6",
    "0102030405060708090a0b0c0d0e0f10111213141516171819 cdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdc" +
    "dcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcd 697eaf0aca3a3aea3a75164746ffaa79",
    "0c0c0c0c0c0c0c0c0c0c0c0c0c0c0c0c 546573742057697468205472756e636174696f6e 56461ef2342edc00f9" +
    "bab995690efd4c",
    "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa" +
    "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa 54657374205573696e67204" +
    "c6172676572205468616e20426c6f636b2d53697a65204b6579202d2048617368204b6579204669727374 6b1ab7" +
    "fe4bd7bf8f0b62e6ce61b9d0cd",
    "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa" +
    "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa 54657374205573696e67204" +
    "c6172676572205468616e20426c6f636b2d53697a65204b657920616e64204c6172676572205468616e204f6e652" +
    "0426c6f636b2d53697a652044617461 6f630fad67cda0ee1fb1f562db3aa53e"];
var HMAC_SHA1 = [
    "0b0b0b0b0b0b0b0b0b0b0b0b0b0b0b0b0b0b0b0b 4869205468657265 b617318655057264e28bc0b6fb378c8ef1" +
    "46be00",
    "4a656665 7768617420646f2079612077616e7420666f72206e6f7468696e673f effcdf6ae5eb2fa2d27416d5f1" +
    "84df9c259a7c79",
    "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa ddddddddddddddddddddddddddddddddddddddddddddddddddd" +
    "ddddddddddddddddddddddddddddddddddddddddddddddddd 125d7342b9ac11cd91a39af48aa17b4f63f175d3",
    "0102030405060708090a0b0c0d0e0f10111213141516171819 cdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdc" +
    "dcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcd 4c9007f4026250c6bc8414f9bf50c86c" +
    "2d7235da",
    "0c0c0c0c0c0c0c0c0c0c0c0c0c0c0c0c0c0c0c0c 546573742057697468205472756e636174696f6e 4c1a03424b" +
    "55e07fe7f27be1d58bb9324a9a5a04",
    "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa" +
    "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa 54657374205573696e67204" +
    "c6172676572205468616e20426c6f636b2d53697a65204b6579202d2048617368204b6579204669727374 aa4ae5" +
    "e15272d00e95705637ce8a3b55ed402112",
    "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa" +
    "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa 54657374205573696e67204" +
    "c6172676572205468616e20426c6f636b2d53697a65204b657920616e64204c6172676572205468616e204f6e652" +
    "0426c6f636b2d53697a652044617461 e8e99d0f45237d786d6bbaa7965c7808bbff1a91"];
var HMAC_SHA256 = [
    "0b0b0b0b0b0b0b0b0b0b0b0b0b0b0b0b0b0b0b0b 4869205468657265 b0344c61d8db38535ca8afceaf0bf12b88" +
    "1dc200c9833da726e9376c2e32cff7",
    "4a656665 7768617420646f2079612077616e7420666f72206e6f7468696e673f 5bdcc146bf60754e6a04242608" +
    "9575c75a003f089d2739839dec58b964ec3843",
    "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa ddddddddddddddddddddddddddddddddddddddddddddddddddd" +
    "ddddddddddddddddddddddddddddddddddddddddddddddddd 773ea91e36800e46854db8ebd09181a72959098b3e" +
    "f8c122d9635514ced565fe",
    "0102030405060708090a0b0c0d0e0f10111213141516171819 cdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdc" +
    "dcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcd 82558a389a443c0ea4cc819899f2083a" +
    "85f0faa3e578f8077a2e3ff46729665b",
    "0c0c0c0c0c0c0c0c0c0c0c0c0c0c0c0c0c0c0c0c 546573742057697468205472756e636174696f6e a3b6167473" +
    "100ee06e0c796c2955552b",
    "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa" +
    "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa" +
    "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa 5465737420557" +
    "3696e67204c6172676572205468616e20426c6f636b2d53697a65204b6579202d2048617368204b6579204669727" +
    "374 60e431591ee0b67f0d8a26aacbf5b77f8e0bc6213728c5140546040f0ee37f54",
    "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa" +
    "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa" +
    "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa 5468697320697" +
    "320612074657374207573696e672061206c6172676572207468616e20626c6f636b2d73697a65206b657920616e6" +
    "42061206c6172676572207468616e20626c6f636b2d73697a6520646174612e20546865206b6579206e656564732" +
    "0746f20626520686173686564206265666f7265206265696e6720757365642062792074686520484d414320616c6" +
    "76f726974686d2e 9b09ffa71b942fcb27635fbcd5b0e944bfdc63644f0713938a7f51535c3a35e2"];

// Keys, plaintexts and ciphertexts.
// FIPS 197, appendices B and C; NIST SP 800-38A, F.1; NIST CAVP, ECBMMT.
var AES_128 = [
    "2b7e151628aed2a6abf7158809cf4f3c 3243f6a8885a308d313198a2e0370734 3925841d02dc09fbdc11859719" +
    "6a0b32",
    "000102030405060708090a0b0c0d0e0f 00112233445566778899aabbccddeeff 69c4e0d86a7b0430d8cdb78070" +
    "b4c55a",
    "2b7e151628aed2a6abf7158809cf4f3c 6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45a" +
    "f8e5130c81c46a35ce411e5fbc1191a0a52eff69f2445df4f9b17ad2b417be66c3710 3ad77bb40d7a3660a89eca" +
    "f32466ef97f5d3d58503b9699de785895a96fdbaaf43b1cd7f598ece23881b00e3ed0306887b0c785e27e8ad3f82" +
    "23207104725dd4",
    "c5805cd1c4a7b98a715badb709720bf4 84f809fc5c84652376cc0df10095bc00b9f0547fa91a2d3310a0adbc9cc" +
    "6191ade2aaa6fffa5e406af7223955f9277bfb06eb1dd2bbfbefe32ab342c36302bf22bc64e1b394032bbb5f4e67" +
    "44f1bcbf2 a6dc096bc21b0658e416a0f679fefc6e958e9c56e3ce04fdf6e392c2db770a60d9523c255925e14a3e" +
    "02a1002bf3875c2e501bac618bee1f55f9850454854eef9d693d90937cc8387b6f4c4414e2080b",
    "4c35be028e1475278346eae531cbee5c 7adcf4a494f6b09790c82c8bb97db62c5d3fa4032f06dfeceaad9ecb374" +
    "b747bd1c08d07e78e351dc2eb99bfa714d23cffe31f5fb5a472e6e0252f35a20c304c4f6d0cf7d29c99444d40af3" +
    "a00a92fc86c6444fcb80ce9765362ac1bdba0b10e 22217953f71932ab4360d97ef495081559f1fcb09caca41fa0" +
    "c65f7b1792b560eabe18f3b3b06ef80c41886f24c5d6d32d20427e83d8b5564d9ac7435a2842c1cf7c6fcc229eb7" +
    "f518d3e0167d510efbaee39a0438fc800eb6acfc203c93280c"];
var AES_192 = [
    "000102030405060708090a0b0c0d0e0f1011121314151617 00112233445566778899aabbccddeeff dda97ca486" +
    "4cdfe06eaf70a0ec0d7191",
    "8e73b0f7da0e6452c810f32b809079e562f8ead2522c6b7b 6bc1bee22e409f96e93d7e117393172aae2d8a571e0" +
    "3ac9c9eb76fac45af8e5130c81c46a35ce411e5fbc1191a0a52eff69f2445df4f9b17ad2b417be66c3710 bd334f" +
    "1d6e45f25ff712a214571fa5cc974104846d0ad3ad7734ecb3ecee4eefef7afd2270e2e60adce0ba2face6444e9a" +
    "4b41ba738d6c72fb16691603c18e0e",
    "0c0333d8fe3e99a1eecc120d6b54bb8faa888d12794de93e 6f825ad0e2fcabd811db11e2840f0884470b87eaa67" +
    "8e329342bf0d1125569c16dfa924049a51b497d594825ffca4f4062cd02359d0ead2b0e014264bf1bb313e741a06" +
    "eb4813205470047520133cf91 e6128a9fb497b2ec0d0e9fe1b24e691ea36c0628eb55046b2f20de9d281dd9dbbb" +
    "eaa0519a4875d3516b15022330163b2798a9102ee9d141a3416c1a277442d4cf1fec87ccea571a23b91a461991ec" +
    "0d",
    "b07da99fbe0b193e5336141a9819974b1a9a4102129db861 27756c11f57c40169f95f25141fb1a07d9444d864e4" +
    "c43b9b16f39fbc2fb9529b6e4c9fb37ba7994add9e057bce070fd0d64b8e452e58baa84005ffb6fe7f3a7710f35f" +
    "87f28624268526fbb5e8ea88db272972adf2227e0ca7b09ad48915754 7516e53877236e931e7fbae22ed2ca5116" +
    "b72a700f6e397c2aa47c304b3f5c2a026d89831a5104ae7b73ef48de709c1b9e661ae973dea6bb38217a7650228c" +
    "cc6b228b33f567121427e9f21cbd3ec6aa35ebba336f51ed8e4bf6e75c5866bc20"];
var AES_256 = [
    "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f 00112233445566778899aabbccd" +
    "deeff 8ea2b7ca516745bfeafc49904b496089",
    "603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4 6bc1bee22e409f96e93d7e11739" +
    "3172aae2d8a571e03ac9c9eb76fac45af8e5130c81c46a35ce411e5fbc1191a0a52eff69f2445df4f9b17ad2b417" +
    "be66c3710 f3eed1bdb5d2a03c064b5a7e3db181f8591ccb10d410ed26dc5ba74a31362870b6ed21b99ca6f4f9f1" +
    "53e7b1beafed1d23304b7a39f9f3ff067d8d8f9e24ecc7",
    "ba42b760bb5a5de21acb9aba214c9783cd71ea841ada018580abc4e1be3b76dd 4b4b12d6ee6fc0bf987eaafe263" +
    "4aad464781ff4c83d3f8a61a6af7c0a6d51f0e3855d0e02feb307652a6f562bfebe4604baf1b4e7cdd01603f231b" +
    "cf7a0c95645a141b704008cd8d62979201a4c84e2 fa18d25e37ea0ce94f0949efc0edecc6a40fada8f007fd8e76" +
    "0afed0a83ebb350c82b03baaa6ee19f791bb9bd1b44d27a76fc6eb0e1c0017d68776ed69a541851a732e46ef328d" +
    "ef064baf6a0a755588",
    "1d29079cc34ab5a3bc713f416a129f9d26ada15fca458cc2731404ea857d2f79 b36809198132518d815aa37f32f" +
    "40dd7a952ec8bd63355700837b450b396b33c72125e23482a84a42b916021c3de78156f85c6a78906167feb64afd" +
    "8b1d935d641c8ce1a89f3849588eeeb9910d40336ca385fc37a5e87bb84ab9ccbb05b3a28 7ae803b14914d15643" +
    "9f580c02c592bf9a41b7b80c20168129a33fae2290403f01a6fabe4fea7ac770ffbc6c421f8e013b9e831674ef17" +
    "eb27d446dded3baf50686b809c18b6bbd588cd3c7423b64987e9164b7e1e66987dc9319790ae27b3e8"];
// FIPS 81, table B1; J. O. Grabbe, The DES Algorithm Illustrated; NBS SP 500-20: variable plaintext,
// variable key, permutation operation, substitution table.
var DES = [
    "0123456789abcdef 4e6f77206973207468652074696d6520666f7220616c6c20 3fa40e8a984d48156a271787ab" +
    "8883f9893d51ec4b563b53",
    "133457799bbcdff1 0123456789abcdef 85e813540f0ab405",
    "0101010101010101 8000000000000000 95f8a5e5dd31d900",
    "0101010101010101 0040000000000000 424250b37c3dd951",
    "0101010101010101 0000000100000000 aeb5f5ede22d1a36",
    "0101010101010101 0000000000000001 166b40b44aba4bd6",
    "8001010101010101 0000000000000000 95a8d72813daa94d",
    "0101010201010101 0000000000000000 b3c1cc715cb879d8",
    "0101010101010102 0000000000000000 869efd7f9f265a09",
    "1046913489980131 0000000000000000 88d55e54f54c97b4",
    "1007103489988020 0000000000000000 0c0cc00c83ea48fd",
    "7ca110454a1a6e57 01a1d6d039776742 690f5b0d9a26939b",
    "0131d9619dc1376e 5cd54ca83def57da 7a389d10354bd271",
    "07a1133e4a0b2686 0248d43806f67172 868ebb51cab4599a",
    "3849674c2602319e 51454b582ddf440a 7178876e01f19b2a",
    "04b915ba43feb5b6 42fd443059577fa2 af37fb421f8c4095",
    "0113b970fd34f2ce 059b5e0851cf143a 86a560f10ec6d85b",
    "0170f175468fb5e6 0756d8e0774761d2 0cd3da020021dc09",
    "43297fad38e373fe 762514b829bf486a ea676b2cb7db2b7a",
    "07a7137045da2a16 3bdd119049372802 dfd64a815caf1a0f",
    "04689104c2fd3b2f 26955f6835af609a 5c513c9c4886c088",
    "37d06bb516cb7546 164d5e404f275232 0a2aeeae3ff4ab77",
    "1f08260d1ac2465e 6b056e18759f5cca ef1bf03e5dfa575a",
    "584023641aba6176 004bd6ef09176062 88bf0db6d70dee56",
    "025816164629b007 480d39006ee762f2 a1f9915541020b56",
    "49793ebc79b3258f 437540c8698f3cfa 6fbf1cafcffd0556",
    "4fb05e1515ab73a7 072d43a077075292 2f22e49bab7ca1ac",
    "49e95d6d4ca229bf 02fe55778117f12a 5a6b612cc26cce4a",
    "018310dc409b26d6 1d9d5c5018f728c2 5f4c038ed12b2e41",
    "1c587f1c13924fef 305532286d6f295a 63fac0d034d9f793"];
// NIST CAVP, TECBMMT2; NIST SP 800-67, B.1, and NIST CAVP, TECBMMT3.
var DES_2_KEYS = [
    "ad192fd064b5579e7a4fb3c8f794f22a 13bad542f3652d67 908e543cf2cb254f",
    "259df16e7af804fe83b90e9bf7c7e557 a4619c433bbd6787c07c81728f9ac9fa 9e06de155c483c6bcfd834dbc8" +
    "bd5830",
    "326b494cd33ee65737ae5ebf46dff2dc 0654b84f30cbb2846bccd9d56463d6db9e12f3465b2322ce dec0c5935e" +
    "5430f98ad636fa3d7caff1946766bdc201edd9",
    "3ba298d997082338e02a3d204fae7949 19a4f0ef3cabcad667c6e0a02b55e3c66db885c20b613cc7c32d43af50f" +
    "4e335 622c65eb6fc01bf4892287532e32c9c73b991cb33932926ac43a0c7e08b34501",
    "32325e8583e597296e52c7fbe01a5dad c8f97e987da45d96ed5878e565faac36e55f0da3300f93921f4810dd3a4" +
    "6653089c2f6b2a8b95be7 2c125b84ff980e01d11ac40e2588002a28d30e1013e8e106b2e8347d064b52ef20def2" +
    "7628887605",
    "2f92438cd30edcd6f897d5c425ec83df efdf4135fbf593c7f53f51f86040c47e6c7e2837d2d8b019001acb6876c" +
    "fa62b7057f2e0c539e76f0fba895d0cae2a42 c09691e1724a8998a762df22469934515753389fd22b51734bf0b1" +
    "22e00380f6e407fcd363939f54f5818899375b4cea"];
var DES_3_KEYS = [
    "0123456789abcdef23456789abcdef01456789abcdef0123 54686520717566636b2062726f776e20666f78206a7" +
    "56d70 a826fd8ce53b855fcce21c8112256fe668d5c05dd9b6b900",
    "a2b5bc67da13dc92cd9d344aa238544a0e1fa79ef76810cd 329d86bdf1bc5af4 d946c2756d78633f",
    "49e692290d2a5e46bace79b9648a4c5d491004c262dc9d49 6b1540781b01ce1997adae102dbf3c5b 4d0dc182d6" +
    "e481ac4a3dc6ab6976ccae",
    "c16189f43451196bfb4c438580c20408571f0d5e4a586491 dd9a97741093334bd0c9761105cfb79cc3bac34a7c8" +
    "5bd8a d2f3f1d32a9ea09b5acb589c41a07320fb8d33a2fc2b0ed2",
    "b0265876ae4cce98e697cef4048a45e30815a83276efec31 b59cc5e13bd10f801e2464e029c383cacfe812646c0" +
    "bf805ce560848f459df5f 26d325d7f6b90510521344875d157166580748b2a3feeecb959e574e451cae80",
    "7694a26d9e1091c237d32cbfa1e351a13df8208cc8081c54 212399b6144969c0c9f35191f5d1d4f641b607faa19" +
    "b8c07e1e7c44d81ee4167c2b77a3c0102c324 47ff992001e04464e55fd48a48e040a4ef3e0839c49a2794c5c0c9" +
    "f2a80d345fcaea8e398416ab8e"];

// The numbers of RFC 7515, A.2, as printed there: a key, and the signature of a SHA-256 digest.
var RSA = {
  n: "ofgWCuLjybRlzo0tZWJjNiuSfb4p4fAkd_wWJcyQoTbji9k0l8W26mPddxHmfHQp-Vaw-4qPCJrcS2mJPMEzP1Pt0Bm4" +
     "d4QlL-yRT-SFd2lZS-pCgNMsD1W_YpRPEwOWvG6b32690r2jZ47soMZo9wGzjb_7OMg0LOL-bSf63kpaSHSXndS5z5rexM" +
     "dbBYUsLA9e-KXBdQOS-UTo7WTBEMa2R2CapHg665xsmtdVMTBQY4uDZlxvb3qCo5ZwKh9kG4LT6_I5IhlJH7aGhyxXFvUK" +
     "-DWNmoudF8NAco9_h9iaGNj8q2ethFkMLs91kzk2PAcDTW9gb54h4FRWyuXpoQ",
  e: "AQAB",
  d: "Eq5xpGnNCivDflJsRQBXHx1hdR1k6Ulwe2JZD50LpXyWPEAeP88vLNO97IjlA7_GQ5sLKMgvfTeXZx9SE-7YwVol2NXO" +
     "oAJe46sui395IW_GO-pWJ1O0BkTGoVEn2bKVRUCgu-GjBVaYLU6f3l9kJfFNS3E0QbVdxzubSu3Mkqzjkn439X0M_V51gf" +
     "pRLI9JYanrC4D4qAdGcopV_0ZHHzQlBjudU2QvXt4ehNYTCBr6XCLQUShb1juUO1ZdiYoFaFQT5Tw8bGUl_x_jTj3ccPDV" +
     "ZFD9pIuhLhBOneufuBiB4cS98l2SR_RQyGWSeWjnczT0QU91p1DhOVRuOopznQ",
  p: "4BzEEOtIpmVdVEZNCqS7baC4crd0pqnRH_5IB3jw3bcxGn6QLvnEtfdUdiYrqBdss1l58BQ3KhooKeQTa9AB0Hw_Py5P" +
     "JdTJNPY8cQn7ouZ2KKDcmnPGBY5t7yLc1QlQ5xHdwW1VhvKn-nXqhJTBgIPgtldC-KDV5z-y2XDwGUc",
  q: "uQPEfgmVtjL0Uyyx88GZFF1fOunH3-7cepKmtH4pxhtCoHqpWmT8YAmZxaewHgHAjLYsp1ZSe7zFYHj7C6ul7TjeLQeZ" +
     "D_YwD66t62wDmpe_HlB-TnBA-njbglfIsRLtXlnDzQkv5dTltRJ11BKBBypeeF6689rjcJIDEz9RWdc",
  signature:
     "cC4hiUPoj9Eetdgtv3hF80EGrhuB__dzERat0XF9g2VtQgr9PJbu3XOiZj5RZmh7AAuHIm4Bh-0Qc_lF5YKt_O8W2Fp5jujG" +
     "bds9uJdbF9CUAr7t1dnZcAcQjbKBYNX4BAynRFdiuB--f_nZLgrnbyTyWzO75vRK5h6xBArLIARNPvkSjtQBMHlb1L07Qe7K" +
     "0GarZRmB_eSN9383LcOLn6_dO--xi12jzDwusC-eOkHWEsqtFZESc6BfI7noOPqvhJ1phCnvWh6IeYI2w9QOYEUipUTI8np6" +
     "LbgGY9Fs98rqVt5AXLIhWkWywlVmtVrBp0igcN_IoypGlUPQGe77Rw"
};
var RSA_SIGNED =
  "eyJhbGciOiJSUzI1NiJ9.eyJpc3MiOiJqb2UiLA0KICJleHAiOjEzMDA4MTkzODAsDQogImh0dHA6Ly9leGFtcGxlLmNvbS" +
  "9pc19yb290Ijp0cnVlfQ";
// RFC 8017, section 9.2, note 1.
var SHA256_PREFIX = "3031300d060960864801650304020105000420";

// The RSA factoring challenge RSA-100: the number and its factors.
var RSA_100 = "15226050279225333605356183781326374297180681149613" +
              "80688657908494580122963258952897654000350692006139";
var RSA_100_P = "37975227936943673922808872755445627854565536638199";
var RSA_100_Q = "40094690950920881030683735292761468389214899724061";
// RFC 7748, section 4.1: the prime 2^255 - 19. RFC 8032, section 5.1.3: 2^((p-1)/4) modulo p.
var PRIME_25519 = "7fffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffed";
var ROOT_25519 = "2b8324804fc1df0b2b4d00993dfbd7a72f431806ad2fe478c4ee1b274a0ea0b0";

// A row: its name, and work(check), where check(what, expected, work) does a case; or the reason why it
// was not tested.
var rows = [];
var failures = [];

function row(name, work) {
  rows.push({name: name, work: work, cases: 0, failed: 0});
}

function runRow(entry) {
  if (typeof entry.work === "string") return;
  entry.work(function (what, expected, work) {
    var found;
    entry.cases++;
    try {
      found = String(work());
    } catch (e) {
      found = "error " + e.number + ", " + (e.description || e.message);
    }
    if (found === String(expected)) return;
    entry.failed++;
    failures.push(entry.name + ", " + what + ": expected " + expected + ", found " + found);
  });
}

function bytes(hex) {
  return Bytes.FromHex(hex);
}

function create(name) {
  return new ActiveXObject("Vardeko.crypt." + name);
}

function repeated(text, count) {
  var result = "";
  while (result.length < count) result += text;
  return result.substr(0, count);
}

// Texts of bytes: RFC 4648, section 10.

row("bytes", function (check) {
  var coded = ["", "Zg==", "Zm8=", "Zm9v", "Zm9vYg==", "Zm9vYmE=", "Zm9vYmFy"], i, text;
  for (i = 0; i < coded.length; i++) {
    text = "foobar".substr(0, i);
    check("base64 " + i, coded[i], function () { return Bytes.ToBase64(Bytes.FromText(text)); });
    check("base64 " + i + " back", text, function () { return Bytes.ToText(Bytes.FromBase64(coded[i])); });
  }
  check("hexadecimal", "666f6f626172", function () { return Bytes.ToHex(Bytes.FromText("foobar")); });
  check("hexadecimal back", "foobar", function () { return Bytes.ToText(bytes("666F6F626172")); });
  // RFC 3629, section 7.
  check("UTF-8", "41e289a2ce912e f0a38eb4", function () {
    return Bytes.ToHex(Bytes.FromText("A\u2262\u0391.")) + " " + Bytes.ToHex(Bytes.FromText("\ud84c\udfb4"));
  });
  check("equal", "true false", function () {
    return Bytes.Equal(bytes("00ff"), bytes("00ff")) + " " + Bytes.Equal(bytes("00ff"), bytes("00fe"));
  });
});

// Message digests.

function newHash(algorithm, key) {
  var hash = create("HashObject");
  hash.InitHash(algorithm);
  if (key !== undefined) hash.Key = bytes(key);
  return hash;
}

// The digest of a message repeated, in pieces of `step` bytes.
function inPieces(hash, message, count, step) {
  var whole = repeated(message, message.length * Math.min(count, 1000)), pieces = [], i, j;
  for (j = 0; j < whole.length; j += 2 * step) pieces.push(bytes(whole.substr(j, 2 * step)));
  hash.Reset();
  for (i = 0; i < count; i += 1000) {
    for (j = 0; j < pieces.length; j++) hash.HashUpdate(pieces[j]);
  }
  hash.HashFinalize();
  return hash.Value.toLowerCase();
}

function digestRow(algorithm, vectors, size) {
  row(algorithm, function (check) {
    var hash = newHash(algorithm), i, v;
    check("size", size + " 64", function () { return hash.HashSize + " " + hash.BlockSize; });
    for (i = 0; i < vectors.length; i++) {
      v = vectors[i].split(" ");
      check("message " + i, v[2], function () {
        if (v[1] !== "1") return inPieces(hash, v[0], Number(v[1]), 1000);
        hash.HashData(bytes(v[0]));
        return hash.Value.toLowerCase();
      });
      if (v[1] !== "1") continue;
      check("message " + i + " in pieces", v[2], function () { return inPieces(hash, v[0], 1, 3); });
      check("message " + i + " as bytes", v[2], function () { return Bytes.ToHex(hash.BinaryValue); });
    }
  });
}

function hmacRow(algorithm, vectors) {
  row("HMAC-" + algorithm, function (check) {
    for (var i = 0; i < vectors.length; i++) {
      var v = vectors[i].split(" "), hash = newHash(algorithm, v[0]);
      // The RFC prints some codes in part.
      check("case " + i, v[2], function () {
        hash.HashData(bytes(v[1]));
        return hash.Value.toLowerCase().substr(0, v[2].length);
      });
      check("case " + i + " in pieces", v[2], function () {
        return inPieces(hash, v[1], 1, 7).substr(0, v[2].length);
      });
    }
  });
}

// Ciphers.

function newCipher(algorithm, key) {
  var cipher = create("Symmetric");
  cipher.Init(algorithm);
  cipher.Key = bytes(key);
  return cipher;
}

function transformed(cipher, member, data, step) {
  var result = "", i;
  for (i = 0; i < data.length || i === 0; i += 2 * step) {
    result += Bytes.ToHex(cipher[member](bytes(data.substr(i, 2 * step)), i + 2 * step >= data.length));
  }
  return result;
}

function cipherRow(name, algorithm, vectors) {
  row(name, function (check) {
    var i, v, block, cipher;
    for (i = 0; i < vectors.length; i++) {
      v = vectors[i].split(" ");
      cipher = newCipher(algorithm, v[0]);
      block = cipher.BlockSize;
      check("encryption " + i, v[2], function () { return transformed(cipher, "Encrypt", v[1], 65536); });
      check("decryption " + i, v[1], function () { return transformed(cipher, "Decrypt", v[2], 65536); });
      check("encryption " + i + " in pieces", v[2], function () {
        return transformed(cipher, "Encrypt", v[1], 5);
      });
      check("decryption " + i + " in pieces", v[1], function () {
        return transformed(cipher, "Decrypt", v[2], 11);
      });
    }
    padCases(check, newCipher(algorithm, vectors[0].split(" ")[0]), block);
  });
}

// The last block, of which all but three bytes are missing.
function padCases(check, cipher, block) {
  var pads = [0, 65, 255], i;
  function padded() {
    return Bytes.ToHex(cipher.Decrypt(cipher.Encrypt(bytes("616263"))));
  }
  for (i = 0; i < pads.length; i++) {
    cipher.PadType = pads[i];
    check("pad " + pads[i],
          "616263" + repeated(Bytes.ToHex(Bytes.FromArray([pads[i]])), 2 * (block - 3)), padded);
  }
  cipher.PadType = -1;
  check("random pad", 2 * block + " 616263", function () {
    var text = padded();
    return text.length + " " + text.substr(0, 6);
  });
  check("no pad", 2 * block, function () {
    return Bytes.ToHex(cipher.Encrypt(bytes(repeated("00", 2 * block)))).length;
  });
}

digestRow("MD5", MD5, 16);
digestRow("SHA1", SHA1, 20);
digestRow("SHA256", SHA256, 32);
hmacRow("MD5", HMAC_MD5);
hmacRow("SHA1", HMAC_SHA1);
hmacRow("SHA256", HMAC_SHA256);
cipherRow("AES-128", "AES", AES_128);
cipherRow("AES-192", "AES", AES_192);
cipherRow("AES-256", "AES", AES_256);
cipherRow("DES", "DES", DES);
cipherRow("triple DES, 2 keys", "DES", DES_2_KEYS);
cipherRow("triple DES, 3 keys", "DES", DES_3_KEYS);

// Big numbers.

function decimal(text) {
  return create("Number").NewNumber(text);
}

function hexNumber(digits) {
  var number = create("Number");
  number.Hex = digits;
  return number;
}

// The text of zero cannot be read.
function numeral(number) {
  return number.Cmp(0) === 0 ? "0" : number.Value;
}

row("big numbers", function (check) {
  var n = decimal(RSA_100), p = decimal(RSA_100_P), q = decimal(RSA_100_Q);
  check("RSA-100 multiplied", RSA_100, function () { return p.Mul(q).Value; });
  check("RSA-100 divided", RSA_100_P, function () { return n.Div(q).Value; });
  check("its remainder", "0", function () { return numeral(n.Mod(p)); });
  check("another remainder", "1", function () { return numeral(n.Add(1).Mod(p)); });
  check("greatest common divisor", RSA_100_P, function () { return n.GCD(p.Mul(12)).Value; });
  check("comparison", "-1 1 0", function () { return p.Cmp(q) + " " + q.Cmp(p) + " " + q.Cmp(RSA_100_Q); });
  check("sum and difference", RSA_100_P, function () { return p.Add(q).Sub(q).Value; });
  check("below zero", "-1 2", function () {
    var below = decimal("3").Sub(5);
    return below.Cmp(0) + " " + below.Value;
  });
  check("one more and one less", RSA_100_P, function () {
    var number = decimal(RSA_100_P);
    number.Inc();
    number.Dec();
    return number.Value;
  });
  // 30! by OEIS A000142.
  check("factorial", "265252859812191058636308480000000", function () {
    for (var i = 2, product = decimal("1"); i <= 30; i++) product = product.Mul(i);
    return product.Value;
  });
  // M127, OEIS A000668.
  check("hexadecimal", "170141183460469231731687303715884105727", function () {
    return hexNumber(repeated("7fffffffffffffffffffffffffffffff", 32)).Value;
  });
  check("decimal", "7fffffffffffffffffffffffffffffff", function () {
    return decimal("170141183460469231731687303715884105727").Hex;
  });
  check("text", "616263 6382179 abc", function () {
    var number = create("Number");
    number.Binary = Bytes.FromText("abc");
    return number.Hex + " " + number.Value + " " + number.Text(65001);
  });
  check("bytes", "0102ff", function () { return Bytes.ToHex(hexNumber("102ff").Binary); });
});

row("number theory", function (check) {
  var prime = hexNumber(PRIME_25519), less = prime.Sub(1);
  check("power", ROOT_25519, function () {
    return decimal("2").ModExp(less.Div(4).Binary, prime.Binary).Hex;
  });
  check("its square", less.Hex, function () {
    return hexNumber(ROOT_25519).ModExp(2, prime.Binary).Hex;
  });
  check("Fermat", "1", function () { return decimal("3").ModExp(less.Binary, prime.Binary).Value; });
  check("even modulus", "1", function () { return decimal("3").ModExp(8, 32).Value; });
  check("inverse", "1", function () {
    var inverse = decimal("121666").ModInv(prime.Binary);
    return inverse.Mul(121666).Mod(prime.Binary).Value;
  });
  check("inverse of 3 modulo 7", "5", function () { return decimal("3").ModInv(7).Value; });
});

row("random numbers", function (check) {
  var number = create("Number"), others = {}, i;
  check("exact size", 64, function () {
    number.Random(32, true);
    return number.Hex.length;
  });
  check("odd", "1", function () {
    number.Random(32, false, true);
    return number.Mod(2).Value;
  });
  for (i = 0; i < 8; i++) {
    check("a new one each time", false, function () {
      number.Random(16, true);
      var seen = others.hasOwnProperty(number.Hex);
      others[number.Hex] = true;
      return seen;
    });
  }
});

// RSA.

function unsigned(text) {
  text = text.replace(/-/g, "+").replace(/_/g, "/");
  return Bytes.FromBase64(text + "==".substr(0, (4 - text.length % 4) % 4));
}

// EMSA-PKCS1-v1_5, RFC 8017, section 9.2, without the leading zero byte, which a number loses.
function encodedMessage() {
  var hash = newHash("SHA256");
  hash.HashData(Bytes.FromText(RSA_SIGNED));
  var digest = SHA256_PREFIX + hash.Value.toLowerCase();
  return "01" + repeated("ff", 510 - 2 - 2 - digest.length) + "00" + digest;
}

row("RSA", function (check) {
  var rsa = create("RSA"), signature = unsigned(RSA.signature), message = encodedMessage();
  rsa.Modulus = unsigned(RSA.n);
  rsa.PublicExp = unsigned(RSA.e);
  rsa.SecretExp = unsigned(RSA.d);
  rsa.P = unsigned(RSA.q);
  rsa.Q = unsigned(RSA.p);
  check("public operation", message, function () { return Bytes.ToHex(rsa.Encrypt(signature)); });
  check("secret operation", Bytes.ToHex(signature), function () {
    return Bytes.ToHex(rsa.Decrypt(bytes(message)));
  });
  check("by the primes", Bytes.ToHex(signature), function () {
    return Bytes.ToHex(rsa.DecryptPQ(bytes(message)));
  });
  check("block size", 255, function () { return rsa.BlockSize; });
});

row("RSA keys", function (check) {
  var rsa = create("RSA"), message = "0123456789abcdef";
  check("of given primes", "2000009000009 353023016129", function () {
    rsa.CreateKeys(1000000, 2000000);
    return decimal(rsa.Modulus).Value + " " + decimal(rsa.SecretExp).Value;
  });
  rsa.Reset();
  rsa.CreateRandKeys(64, true);
  check("random modulus", 64, function () { return Bytes.Count(rsa.Modulus); });
  check("product of the primes", Bytes.ToHex(rsa.Modulus), function () {
    return Bytes.ToHex(decimal(rsa.P).Mul(rsa.Q).Binary);
  });
  check("there and back", message, function () {
    return hexNumber(Bytes.ToHex(rsa.Decrypt(rsa.Encrypt(bytes(message))))).Hex.replace(/^/, "0");
  });
  check("there and back by the primes", message, function () {
    return hexNumber(Bytes.ToHex(rsa.DecryptPQ(rsa.Encrypt(bytes(message))))).Hex.replace(/^/, "0");
  });
});

// Stream filters.

var NO_STREAMS = "not tested: this host gives scripts no streams";
var hasStreams = typeof WScript.MemoryStream !== "undefined" && typeof WScript.StreamOf !== "undefined";

function writeAll(stream, hex, step) {
  for (var i = 0; i < hex.length; i += 2 * step) stream.Write(bytes(hex.substr(i, 2 * step)));
}

function readAll(stream, step) {
  var result = "", piece;
  while ((piece = stream.Read(step)).length > 0) result += Bytes.ToHex(piece);
  return result;
}

function digestFilterCases(check, algorithm, key, message, expected, what) {
  var filter = create("ToviStreamDigest"), memory = WScript.MemoryStream();
  filter.ReadAlgorithm = algorithm;
  filter.WriteAlgorithm = algorithm;
  if (key !== null) {
    filter.ReadKey = bytes(key);
    filter.WriteKey = bytes(key);
  }
  filter.Stream = memory;
  check(what + " written", expected, function () {
    writeAll(WScript.StreamOf(filter), message, 13);
    return filter.WriteValue.toLowerCase().substr(0, expected.length);
  });
  check(what + " read", message + " " + expected, function () {
    memory.Seek(0);
    return readAll(WScript.StreamOf(filter), 7) + " " +
           filter.ReadValue.toLowerCase().substr(0, expected.length);
  });
}

function digestFilterRow(check) {
  var digests = {MD5: MD5, SHA1: SHA1, SHA256: SHA256}, name, i, v;
  var codes = {MD5: HMAC_MD5, SHA1: HMAC_SHA1, SHA256: HMAC_SHA256};
  for (name in digests) {
    for (i = 0; i < digests[name].length; i++) {
      v = digests[name][i].split(" ");
      if (v[1] === "1") digestFilterCases(check, name, null, v[0], v[2], name + " " + i);
    }
    for (i = 0; i < codes[name].length; i++) {
      v = codes[name][i].split(" ");
      digestFilterCases(check, name, v[0], v[1], v[2], "HMAC-" + name + " " + i);
    }
  }
}

function filterOver(memory, algorithm, key, isReadDecrypting) {
  var filter = create("ToviStreamCrypt");
  filter.ReadAlgorithm = algorithm;
  filter.WriteAlgorithm = algorithm;
  filter.ReadKey = bytes(key);
  filter.WriteKey = bytes(key);
  filter.ReadDecrypt = isReadDecrypting;
  filter.WriteDecrypt = !isReadDecrypting;
  filter.Stream = memory;
  return filter;
}

// What is written through a filter, as it arrives behind it, and back.
function cryptFilterCases(check, algorithm, key, from, to, isReadDecrypting, what) {
  var memory = WScript.MemoryStream();
  var filter = filterOver(memory, algorithm, key, isReadDecrypting);
  check(what + " written", to, function () {
    writeAll(WScript.StreamOf(filter), from, 9);
    filter.WriteFinalize();
    memory.Seek(0);
    return readAll(memory, 4096);
  });
  check(what + " read", from, function () {
    memory.Seek(0);
    return readAll(WScript.StreamOf(filter), 4096);
  });
}

function cryptFilterRow(check) {
  var ciphers = [["AES", AES_128, "AES-128"], ["AES", AES_192, "AES-192"], ["AES", AES_256, "AES-256"],
                 ["DES", DES, "DES"], ["DES", DES_2_KEYS, "2 keys"], ["DES", DES_3_KEYS, "3 keys"]];
  for (var i = 0; i < ciphers.length; i++) {
    for (var j = 0; j < ciphers[i][1].length; j++) {
      var v = ciphers[i][1][j].split(" "), name = ciphers[i][2] + " " + j;
      cryptFilterCases(check, ciphers[i][0], v[0], v[1], v[2], true, name + " encryption");
      cryptFilterCases(check, ciphers[i][0], v[0], v[2], v[1], false, name + " decryption");
    }
  }
}

row("digest filter", hasStreams ? digestFilterRow : NO_STREAMS);
row("cipher filter", hasStreams ? cryptFilterRow : NO_STREAMS);

function column(text, width, isNumber) {
  var spaces = repeated(" ", Math.max(0, width - String(text).length));
  return isNumber ? spaces + text : text + spaces;
}

function printRow(name, cases, result) {
  WScript.Echo(column(name, 20) + column(cases, 6, true) + "  " + result);
}

function usage() {
  WScript.Echo("Usage: " + WScript.ScriptName);
  WScript.Echo("Tests every algorithm of the classes with published answers. The exit status is 1 if");
  WScript.Echo("one fails.");
}

function main() {
  var total = 0, i;
  if (WScript.Arguments.length > 0) {
    usage();
    WScript.Quit(WScript.Arguments(0) === "--help" ? 0 : 2);
  }
  printRow("algorithm", "cases", "result");
  for (i = 0; i < rows.length; i++) {
    // What fails outside a case fails the row.
    try {
      runRow(rows[i]);
    } catch (e) {
      rows[i].failed++;
      failures.push(rows[i].name + ": error " + e.number + ", " + (e.description || e.message));
    }
    total += rows[i].cases;
    printRow(rows[i].name, rows[i].cases,
             typeof rows[i].work === "string" ? rows[i].work
             : rows[i].failed === 0 ? "passed" : rows[i].failed + " FAILED");
  }
  for (i = 0; i < failures.length; i++) WScript.Echo(failures[i]);
  WScript.Echo(total + " cases, " + failures.length + " failed");
  if (failures.length > 0) WScript.Quit(1);
}

main();
