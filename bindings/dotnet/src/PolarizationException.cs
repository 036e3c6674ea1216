using System;

namespace NerovaZel
{
    /// <summary>What was wrong with a call of the libraries.</summary>
    public enum PolarizationError
    {
        /// <summary>The computer's processor lacks SSE, or creation failed for an unknown reason.</summary>
        CreationFailed = 1,

        /// <summary>The library is not initialized; classes of this assembly do that themselves.</summary>
        NotInitialized = 2,

        /// <summary>Memory ran out while a processor was created.</summary>
        OutOfMemory = 3,

        /// <summary>There is no processor.</summary>
        NullHandle = 4,

        /// <summary>There are no pixels.</summary>
        NullInput = 5,

        /// <summary>No output is wanted.</summary>
        NoOutput = 6,

        /// <summary>An output is the input.</summary>
        OutputIsInput = 7,

        /// <summary>Two outputs are the same memory.</summary>
        OutputsEqual = 8,

        /// <summary>The polarizer of the top-left pixel is unknown.</summary>
        Phase = 9,

        /// <summary>The output maximum is 0.</summary>
        OutputMaximum = 10,

        /// <summary>The width is less than 2.</summary>
        Width = 11,

        /// <summary>The height is less than 2.</summary>
        Height = 12,

        /// <summary>The bit depth is out of range.</summary>
        BitDepth = 13,

        /// <summary>An argument is out of its range, or a name is unknown.</summary>
        Argument = 101,

        /// <summary>What frames or a text hold cannot be used.</summary>
        Data = 102,

        /// <summary>Memory ran out.</summary>
        ImagingOutOfMemory = 103,

        /// <summary>The reason is unknown.</summary>
        Unknown = 104,
    }

    /// <summary>A call of the libraries failed. The message says why.</summary>
    public sealed class PolarizationException : Exception
    {
        internal PolarizationException(int code, string text)
            : base(text)
        {
            Error = (PolarizationError)code;
        }

        /// <summary>The reason.</summary>
        public PolarizationError Error { get; }
    }

    internal static class Failure
    {
        private static readonly string[] ProcessorTexts =
        {
            "no processor could be created, most likely because the CPU lacks SSE",
            "the module is not initialized",
            "memory ran out while a processor was created",
            "there is no processor",
            "there are no input pixels",
            "no output is given",
            "an output is the input",
            "two outputs are the same buffer",
            "the layout must be 0, 45, 90 or 135",
            "the output maximum must be 1 to 65535",
            "a frame must be at least 2 pixels wide",
            "a frame must be at least 2 pixels high",
            "the bit depth must be 0 to 16",
        };

        internal static void ThrowIfProcessorFailed(int code)
        {
            if (code != 0)
            {
                bool known = code >= 1 && code <= ProcessorTexts.Length;
                throw new PolarizationException(code, known ? ProcessorTexts[code - 1] : "the reason is unknown");
            }
        }

        // The text is that of this thread's last call.
        internal static void ThrowIfFailed(int code)
        {
            if (code != 0)
            {
                throw new PolarizationException(code, Utf8.Text(NativeMethods.nv_imaging_error_text()));
            }
        }
    }
}
