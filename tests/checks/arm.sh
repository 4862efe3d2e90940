#!/bin/sh
# Compiles the board's code for what it is made for: arm.sh SOURCE_ROOT WORK_FOLDER
# The example in both variants must need nothing but the C library's functions for
# memory and what the vendor's library provides; the readme's code must compile, too.
set -eu
firmware=$1/firmware
stand_ins=$1/tests/firmware/vendor
rm -rf "$2"
mkdir -p "$2"
cd "$2"

compile() { # compile ARGUMENTS...
  arm-none-eabi-gcc -mthumb -Os -std=c99 -Wall -Wextra -Wshadow -Wconversion -Wpedantic -Werror \
    -I"$firmware/pid" -I"$firmware/pid/example" -I"$firmware/camera" -I"$stand_ins" "$@"
}

example() { # example VARIANT WHAT_IT_NEEDS CPU_OPTIONS...
  variant=$1
  needs="memcmp memcpy memmove memset $2"
  shift 2
  compile "$@" -nostdlib -r -o "$variant.o" "$firmware/pid"/*.c \
    "$firmware/pid/example/main.c" "$firmware/pid/example/process_simulated.c" \
    "$firmware/pid/example/board_$variant.c" -lgcc
  arm-none-eabi-size "$variant.o" | sed -n "2s|^|$variant $*: |p"
  for name in $(arm-none-eabi-nm -u "$variant.o" | sed 's/.* //'); do
    case " $needs " in
      *" $name "*) ;;
      *) echo "board_$variant.c needs $name" >&2; exit 1 ;;
    esac
  done
}

for options in "-mcpu=cortex-m0plus" "-mcpu=cortex-m3" "-mcpu=cortex-m4 -mfpu=fpv4-sp-d16 -mfloat-abi=hard"; do
  for math in "" -ffast-math; do
    # shellcheck disable=SC2086
    compile $options $math -c -o camera.o "$firmware/camera/orvn_camera.c"
    # shellcheck disable=SC2086
    example cmsis "SystemCoreClock SystemCoreClockUpdate" $options $math
    # shellcheck disable=SC2086
    example hal "huart1 HAL_GetTick HAL_UART_Receive_IT HAL_UART_Transmit_IT" $options $math
  done
done

# Each block of C in the readme, as a file of its own.
awk '/^```c$/ { file = "readme" ++count ".c"; next } /^```$/ { file = "" } file { print > file }' "$firmware/README.md"
for block in readme*.c; do
  compile -mcpu=cortex-m3 -Wno-unused-function -Wno-unused-variable -include "$stand_ins/readme.h" -c -o "$block.o" "$block"
  echo "$block compiles"
done
