"""What the module takes of a small device: bytes of the file, of the stack, and by whom."""
