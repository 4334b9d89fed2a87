#include "des_kernels.h"

namespace mirolta {

namespace {

constexpr Kernel<DesTransform> kEncryptKernels[] = {
    {"des-encrypt-portable", 0, DesEncryptPortable},
};

constexpr Kernel<DesTransform> kDecryptKernels[] = {
    {"des-decrypt-portable", 0, DesDecryptPortable},
};

}  // namespace

DesKernelList DesEncryptKernels() noexcept {
  return {kEncryptKernels, sizeof kEncryptKernels / sizeof kEncryptKernels[0]};
}

DesKernelList DesDecryptKernels() noexcept {
  return {kDecryptKernels, sizeof kDecryptKernels / sizeof kDecryptKernels[0]};
}

DesTransform ChosenDesEncrypt() noexcept {
  static const DesTransform chosen = ChooseKernel(kEncryptKernels, ProcessorFeatures()).function;
  return chosen;
}

DesTransform ChosenDesDecrypt() noexcept {
  static const DesTransform chosen = ChooseKernel(kDecryptKernels, ProcessorFeatures()).function;
  return chosen;
}

}  // namespace mirolta
