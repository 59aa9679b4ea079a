declare const factory: (settings: object) => Promise<unknown>;
export default factory;
