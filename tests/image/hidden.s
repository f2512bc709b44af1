# GNU's assembler refers to the function by its section, so that the linker does not
# see that its address is taken. Where it is taken: STORED, COMPUTED or CALLBACK. BOTH and
# DEBUG are sections that an image must not have.
  .section .text$hidden, "xr"
  nop
hidden:
  xorl %eax, %eax
  ret
.ifdef COMPUTED
  .globl Hidden
Hidden:
  leaq hidden(%rip), %rax
  ret
.endif

.ifdef STORED
  .data
  .globl g_hidden
g_hidden:
  .quad hidden
.endif

.ifdef CALLBACK
  .section .rdata
  .globl g_callbacks
g_callbacks:
  .quad hidden
  .quad 0
.endif

.ifdef BOTH
  .section .both, "wx"
  .globl g_hidden
g_hidden:
  .quad 1
.endif

.ifdef DEBUG
  .section .debug_info, "n"
  .globl g_hidden
g_hidden:
  .quad 1
.endif
