#include "Neural/Kernels/Convolution.h"

#include "Neural/Kernels/DirectConvolution.h"
#include "Neural/Kernels/NarrowConvolution.h"
#include "Neural/Kernels/WinogradConvolution.h"

namespace quillmere::neural {

void convolve(const ConvolutionCall& call, KernelScratch& scratch, WorkerPool& pool) {
    switch (call.weights.algorithm) {
        case ConvolutionAlgorithm::direct:
            return convolveDirect(call, pool);
        case ConvolutionAlgorithm::narrow:
            return convolveNarrow(call, pool);
        case ConvolutionAlgorithm::winograd:
            return convolveWinograd(call, scratch, pool);
    }
}

}  // namespace quillmere::neural
