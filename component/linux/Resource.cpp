// The module's resource as a pair of symbols. FXBOX_RESOURCE is its file, as the build knows it.

__asm__(
    ".pushsection .rodata\n"
    ".balign 16\n"
    ".globl KvResourceStorage_start, KvResourceStorage_end\n"
    ".type KvResourceStorage_start, @object\n"
    ".type KvResourceStorage_end, @object\n"
    "KvResourceStorage_start:\n"
    ".incbin \"" FXBOX_RESOURCE
    "\"\n"
    "KvResourceStorage_end:\n"
    ".byte 0\n"
    ".popsection\n");
