using System;

namespace NerovaZel
{
    /// <summary>How pixels count in statistics.</summary>
    public enum Weight
    {
        /// <summary>Every pixel once.</summary>
        Equal = 0,

        /// <summary>The degree by power and the angle by polarized power: the means are those of all light together.</summary>
        Power = 1,
    }

    /// <summary>A part of a frame.</summary>
    public struct Region
    {
        /// <summary>A rectangle of pixels.</summary>
        /// <param name="x">First column.</param>
        /// <param name="y">First row.</param>
        /// <param name="width">Columns.</param>
        /// <param name="height">Rows.</param>
        public Region(int x, int y, int width, int height)
        {
            X = x;
            Y = y;
            Width = width;
            Height = height;
        }

        /// <summary>First column.</summary>
        public int X { get; }

        /// <summary>First row.</summary>
        public int Y { get; }

        /// <summary>Columns.</summary>
        public int Width { get; }

        /// <summary>Rows.</summary>
        public int Height { get; }
    }

    /// <summary>Numbers of pixels, of the frame and of four of its images.</summary>
    public struct PixelCounts
    {
        internal unsafe PixelCounts(ulong* counts)
        {
            Frame = (long)counts[0];
            Power = (long)counts[1];
            HorizontalVertical = (long)counts[2];
            Diagonal = (long)counts[3];
            Degree = (long)counts[4];
        }

        /// <summary>Of the frame.</summary>
        public long Frame { get; }

        /// <summary>Of the power.</summary>
        public long Power { get; }

        /// <summary>Of S1.</summary>
        public long HorizontalVertical { get; }

        /// <summary>Of S2.</summary>
        public long Diagonal { get; }

        /// <summary>Of the degree.</summary>
        public long Degree { get; }
    }

    /// <summary>Statistics of pixels, from <see cref="Processor.ComputeStatistics(FrameFormat, ushort[], Region?, Weight)"/>;
    /// docs/statistics.md has the formulas. Values that do not exist are NaN. Never changes.</summary>
    public sealed unsafe class FrameStatistics
    {
        private readonly NativeStatistics native;

        internal FrameStatistics(NativeStatistics statistics)
        {
            native = statistics;
            Saturated = new PixelCounts(statistics.Saturated);
            Dark = new PixelCounts(statistics.Dark);
        }

        /// <summary>All pixels.</summary>
        public long Pixels
        {
            get { return (long)native.Pixels; }
        }

        /// <summary>Pixels without polarized light.</summary>
        public long WithoutAngle
        {
            get { return (long)native.WithoutAngle; }
        }

        /// <summary>Pixels without light.</summary>
        public long WithoutDegree
        {
            get { return (long)native.WithoutDegree; }
        }

        /// <summary>Pixels at the end of the scale or above.</summary>
        public PixelCounts Saturated { get; }

        /// <summary>Pixels at 0.</summary>
        public PixelCounts Dark { get; }

        /// <summary>Axial mean in degrees, above -90 to 90: the mean of 85 and -85 is 90.</summary>
        public double MeanAngle
        {
            get { return native.MeanAngle; }
        }

        /// <summary>Mean resultant length of the doubled angles, 0 to 1.</summary>
        public double Resultant
        {
            get { return native.Resultant; }
        }

        /// <summary>Circular standard deviation in degrees.</summary>
        public double AngleDeviation
        {
            get { return native.AngleDeviation; }
        }

        /// <summary>Mean degree of linear polarization, 0 to 1.</summary>
        public double MeanDegree
        {
            get { return native.MeanDegree; }
        }

        /// <summary>Statistics of the pixels of both, which must be of one weight.</summary>
        /// <param name="one">Not null.</param>
        /// <param name="other">Not null.</param>
        public static FrameStatistics operator +(FrameStatistics one, FrameStatistics other)
        {
            Check.NotNull(one, nameof(one));
            Check.NotNull(other, nameof(other));
            NativeStatistics sum = one.native;
            NativeStatistics more = other.native;
            Failure.ThrowIfFailed(NativeMethods.nv_imaging_add_statistics(&sum, &more));
            return new FrameStatistics(sum);
        }
    }
}
