"""The processor of a benchmark's report: its name, the file of its page, and what is required on it."""
import re

MAKERS = {"AuthenticAMD": "amd", "GenuineIntel": "intel"}
# Peers whose AES by blocks uses 256-bit vectors, from these versions on.
PEERS_WITH_VAES = {"Botan": (3, 6), "libgcrypt": (1, 11)}
BLOCKS_OF_AES = r"kernel/AES-\d+ (en|de)crypt/(1 KiB|16 KiB|1 MiB)$"
# Rows that stand at a limit of processors with AVX-512 and VAES: their maker and family, None for any other; pattern
# of the rows' names, the ratio required instead, the peers it depends on, of which one must be there, and why. The
# first that fits holds.
LIMITS = [
    ("intel", None, BLOCKS_OF_AES, 1.95, None,
     "one 512-bit AES round a cycle, twice what the peers' 256-bit rounds reach: AES by blocks"),
    ("amd", "25", BLOCKS_OF_AES, 0.95, PEERS_WITH_VAES,
     "one 512-bit AES round a cycle or two of 256 bits, as newer peers do: AES by blocks"),
    ("amd", "25", BLOCKS_OF_AES, 1.9, None,
     "one 512-bit AES round a cycle or two of 128 bits, as the peers do: AES by blocks"),
    ("amd", None, BLOCKS_OF_AES, 1.9, PEERS_WITH_VAES,
     "two AES rounds a cycle of any width, of 512 bits here and 256 bits in newer peers: AES by blocks"),
]
# Requirements without vectors wider than AVX2's, instead of the rows' own: the first pattern that a row's
# name matches, the ratio, and the peer it refers to, None for the best.
UP_TO_AVX2 = [
    (r"(kernel|engine)/(MD5|SHA|HMAC)", 1.0, None),
    (r"kernel/AES-\d+ .*/16 bytes", 0.9, None),
    (r"kernel/AES", 1.0, None),
    (r"kernel/DES .*/\d+ bytes|kernel/Triple DES .*/\d+ bytes", 1.0, None),
    (r"kernel/(Triple )?DES .*/1 KiB", 4.0, None),
    (r"kernel/(Triple )?DES .*/(4|64) KiB", 10.0, None),
    (r"(kernel|engine)/(?!AES|DES|Triple)", 0.8, "GMP"),
]
# The same with SSE2 only. AES is in constant time for every length, but not faster than look-ups for few blocks.
SSE2 = [
    (r"kernel/AES-\d+ .*iB", 1.0, None),
    (r"kernel/(Triple )?DES .*iB", 4.0, None),
]
# Requirements of programs for 32-bit x86, the same way: with IFMA, and without it.
X86 = [
    (r"(kernel|engine)/(MD5|SHA)", 0.98, 0.98, None),
    (r"kernel/AES-\d+ (en|de)crypt/16 KiB", 2.5, 1.0, None),
    (r"kernel/DES .*/64 KiB", 4.0, 4.0, None),
    (r"kernel/Triple DES .*/64 KiB", 5.0, 5.0, None),
    (r"engine/power modulo (odd|even)/512 ", 1.0, 0.9, None),
    (r"engine/(power modulo (odd|even)|RSA private by primes)/(1024|2048|4096) ", 1.5, 0.9, None),
    (r"(kernel|engine)/(multiply|divide)", 0.8, 0.8, "GMP"),
]
# The levels of features that a page may show: the first feature that a processor has, what the page's name
# has then, and its title.
LEVELS = [("AVX-512", "", ""), ("AVX2", "-avx2", " without wider vectors than AVX2"),
          ("", "-sse2", " with SSE2 only")]

# Peers of scripts that count for no ratio: they run other scripts.
ONLY_SHOWN = ("Node",)


def library(contestant):
    """The library of a contestant: OpenSSL of `OpenSSL EVP`."""
    return contestant.split(" ")[0]


def version(text):
    """(3, 7) of "3.7.1"; () of what is no version."""
    return tuple(int(part) for part in re.findall(r"\d+", text)[:2])


class Processor:
    """What the contexts of reports say of the processor that was measured, the same in all."""

    def __init__(self, context, *others):
        self.contexts = (context, *others)
        self.features = context["features"].split()
        self.is_wide = "AVX-512" in self.features
        # A report from before this was recorded is of the 64-bit mode.
        self.is_x86 = context.get("pointer_bits") == "32"
        maker = context.get("maker", "unknown")
        self.maker = MAKERS.get(maker, re.sub(r"[^a-z0-9]+", "-", maker.lower()).strip("-"))
        self.family, self.model = context.get("family", "0"), context.get("model", "0")
        self.name = context.get("processor", "a processor without a name")

    def __str__(self):
        return f"{self.name}, family {self.family}, model {self.model}"

    def level(self):
        """(what the page's name ends with, what its title ends with)."""
        return next(level[1:] for level in LEVELS if level[0] in ("", *self.features))

    def page(self):
        """The name of its page: each processor has one a mode and level of features."""
        return f"{self.maker}-{self.family}-{self.model}{'-x86' if self.is_x86 else ''}{self.level()[0]}.md"

    def title(self):
        return f"{self.name}{' in 32-bit mode' if self.is_x86 else ''}{self.level()[1]}"

    def command(self):
        """The command that writes its page."""
        return "bench-x86" if self.is_x86 else "bench" + self.level()[0]

    def limits(self):
        """(pattern, ratio, why) of the limits that hold on it, beside these peers."""
        if self.is_x86 or not self.is_wide or "VAES" not in self.features:
            return []
        found = {}
        for maker, family, pattern, ratio, peers, why in LIMITS:
            if maker == self.maker and family in (None, self.family) and (peers is None or self.has_peer(peers)):
                found.setdefault(pattern, (pattern, ratio, why))
        return list(found.values())

    def has_peer(self, least_versions):
        """Whether a report is of one of these peers, of its least version or a later one."""
        return any(version(context.get(peer, "")) >= least
                   for context in self.contexts for peer, least in least_versions.items())

    def requirement(self, name, ours, peers):
        """(required, stretch, the peers that count) of a row."""
        if name.startswith("script/"):
            return ours["required"], ours["stretch"], {
                peer: entry for peer, entry in peers.items() if peer not in ONLY_SHOWN}
        if name.startswith(("class/", "scaling/")):
            return ours["required"], ours["stretch"], peers
        if self.is_wide and not self.is_x86:
            for pattern, required, _ in self.limits():
                if re.match(pattern, name):
                    return required, 0, peers
            return ours["required"], ours["stretch"], peers
        for pattern, required, peer in self.narrow_requirements():
            if re.match(pattern, name):
                counting = {name: entry for name, entry in peers.items() if peer in (None, library(name))}
                return (required, 0, counting) if counting else (0, 0, peers)
        return 0, 0, peers

    def narrow_requirements(self):
        """(pattern, ratio, peer) of what is required instead of the rows' own ratios."""
        if not self.is_x86:
            return UP_TO_AVX2 if "AVX2" in self.features else SSE2
        column = 0 if "IFMA" in self.features else 1
        return [(pattern, ratios[column], peer) for pattern, *ratios, peer in X86]
