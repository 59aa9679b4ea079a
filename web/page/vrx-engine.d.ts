declare module 'vrx-engine' {
  const factory: unknown;
  export default factory;
}
