using System;

namespace NerovaZel
{
    /// <summary>What raw frames of a camera are. Never changes.</summary>
    public sealed class FrameFormat
    {
        /// <summary>Describes frames of <paramref name="width"/> x <paramref name="height"/> pixels, row by row without
        /// gaps.</summary>
        /// <param name="width">Columns, at least 2.</param>
        /// <param name="height">Rows, at least 2.</param>
        /// <param name="layout">Polarizer angle of the sensor's top-left pixel in degrees: 0 is [0, 135 / 45, 90], 45 is
        /// [45, 90 / 0, 135], 90 is [90, 45 / 135, 0], 135 is [135, 0 / 90, 45]. It has no default: a wrong one gives
        /// images that look right and are wrong.</param>
        /// <param name="bitDepth">Significant bits of a pixel, 1 to 16.</param>
        /// <param name="originX">Sensor column of the frame's top-left pixel, at least 0.</param>
        /// <param name="originY">Sensor row of it, at least 0.</param>
        /// <exception cref="ArgumentOutOfRangeException">A number is out of its range.</exception>
        public FrameFormat(int width, int height, int layout, int bitDepth, int originX = 0, int originY = 0)
        {
            Check.Range(width, 2, int.MaxValue, nameof(width));
            Check.Range(height, 2, int.MaxValue, nameof(height));
            if (layout != 0 && layout != 45 && layout != 90 && layout != 135)
            {
                throw new ArgumentOutOfRangeException(nameof(layout), layout, "The layout must be 0, 45, 90 or 135.");
            }

            Check.Range(bitDepth, 1, 16, nameof(bitDepth));
            Check.Range(originX, 0, int.MaxValue, nameof(originX));
            Check.Range(originY, 0, int.MaxValue, nameof(originY));
            Width = width;
            Height = height;
            Layout = layout;
            BitDepth = bitDepth;
            OriginX = originX;
            OriginY = originY;
        }

        /// <summary>Columns.</summary>
        public int Width { get; }

        /// <summary>Rows.</summary>
        public int Height { get; }

        /// <summary>Polarizer angle of the sensor's top-left pixel, in degrees.</summary>
        public int Layout { get; }

        /// <summary>Significant bits of a pixel.</summary>
        public int BitDepth { get; }

        /// <summary>Sensor column of the top-left pixel.</summary>
        public int OriginX { get; }

        /// <summary>Sensor row of the top-left pixel.</summary>
        public int OriginY { get; }

        /// <summary>Width times height.</summary>
        public long PixelCount
        {
            get { return (long)Width * Height; }
        }

        internal unsafe NativeFrame Native(ushort* pixels)
        {
            return new NativeFrame
            {
                Pixels = pixels,
                Width = Width,
                Height = Height,
                OriginX = OriginX,
                OriginY = OriginY,
                Layout = Layout,
                BitDepth = BitDepth,
            };
        }
    }

    internal static class Check
    {
        internal static void Range(int value, int least, int greatest, string argument)
        {
            if (value < least || value > greatest)
            {
                string range = greatest == int.MaxValue ? $"at least {least}" : $"{least} to {greatest}";
                throw new ArgumentOutOfRangeException(argument, value, $"It must be {range}.");
            }
        }

        internal static void Size(long length, long wanted, string argument)
        {
            if (length != wanted)
            {
                throw new ArgumentException($"It has {length} elements; it must have {wanted}.", argument);
            }
        }

        internal static void Size(Array array, long wanted, string argument)
        {
            NotNull(array, argument);
            Size(array.LongLength, wanted, argument);
        }

        internal static void NotNull(object value, string argument)
        {
            if (value == null)
            {
                throw new ArgumentNullException(argument);
            }
        }

        internal static void NotNull(IntPtr pointer, string argument)
        {
            if (pointer == IntPtr.Zero)
            {
                throw new ArgumentNullException(argument);
            }
        }
    }
}
